// ADIF 3.1 (.adi) export and import of contacts, with the satellite fields
// Logbook of The World needs (PROP_MODE SAT, SAT_NAME, BAND and BAND_RX, FREQ
// and FREQ_RX), and a CSV export for spreadsheets.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "logbook/contact.h"
#include "logbook/satnames.h"

namespace veloran {

// The ADIF band ("2m", "70cm", "13cm", ...) holding a frequency in MHz, edges
// included; empty outside every amateur band.
std::string AdifBand(double mhz);

// The whole .adi text: a header (ADIF_VER, PROGRAMID, PROGRAMVERSION,
// CREATED_TIMESTAMP at createdUTC, seconds since 1904) and one record per
// contact. SAT_NAME is LoTW's name from `names` (may be null); our own
// satellite and transponder names travel in APP_VELORAN_ fields so an import
// gives back the same contact.
std::string FormatAdif(const std::vector<ContactRec>& contacts, const SatNameTable* names,
                       uint32_t createdUTC);

// Comma-separated values with a header line; fields holding a comma, a quote
// or a line break are quoted.
std::string FormatCsv(const std::vector<ContactRec>& contacts);

struct AdifImport {
    std::vector<ContactRec> contacts;   // the records kept
    std::vector<std::string> messages;  // "record 3 (W1AW): ..." per skipped record or field
    int records = 0;                    // records seen
    int skipped = 0;                    // records not kept
};

// Reads .adi text. A record without a call, a date or a time, with a date or
// time that is not one, a frequency that is not a number, or a field length
// that does not fit its data is skipped with a message; fields this log does
// not keep are named in a message and the record is kept. Contacts get their
// satellite from APP_VELORAN_SATELLITE, else from SAT_NAME through `names`.
void ParseAdif(const std::string& text, const SatNameTable* names, AdifImport* out);

}  // namespace veloran
