// ADIF .adi export and import. A field is "<NAME:LENGTH>data" (an optional
// ":TYPE" after the length); a record ends with <EOR>; a header, ended by
// <EOH>, comes first when the file does not start with '<' or holds one.

#include "logbook/adif.h"

#include <cctype>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <map>

#include "engine/timebase.h"

namespace veloran {

namespace {

constexpr const char* kAdifVersion = "3.1.4";
constexpr const char* kProgramId = "Veloran";
constexpr const char* kProgramVersion = "0.1.0";
// Application-defined fields are APP_<PROGRAMID>_<NAME>.
constexpr const char* kAppSatellite = "APP_VELORAN_SATELLITE";
constexpr const char* kAppTransponder = "APP_VELORAN_TRANSPONDER";
constexpr const char* kPropModeSatellite = "SAT";

// The ADIF Band enumeration, lower and upper edges in MHz, both included.
struct BandEdge {
    const char* name;
    double lowMHz;
    double highMHz;
};
constexpr BandEdge kBands[] = {
    {"2190m", 0.1357, 0.1378},   {"630m", 0.472, 0.479},      {"560m", 0.501, 0.504},
    {"160m", 1.8, 2.0},          {"80m", 3.5, 4.0},           {"60m", 5.06, 5.45},
    {"40m", 7.0, 7.3},           {"30m", 10.1, 10.15},        {"20m", 14.0, 14.35},
    {"17m", 18.068, 18.168},     {"15m", 21.0, 21.45},        {"12m", 24.89, 24.99},
    {"10m", 28.0, 29.7},         {"8m", 40.0, 45.0},          {"6m", 50.0, 54.0},
    {"5m", 54.000001, 69.9},     {"4m", 70.0, 71.0},          {"2m", 144.0, 148.0},
    {"1.25m", 222.0, 225.0},     {"70cm", 420.0, 450.0},      {"33cm", 902.0, 928.0},
    {"23cm", 1240.0, 1300.0},    {"13cm", 2300.0, 2450.0},    {"9cm", 3300.0, 3500.0},
    {"6cm", 5650.0, 5925.0},     {"3cm", 10000.0, 10500.0},   {"1.25cm", 24000.0, 24250.0},
    {"6mm", 47000.0, 47200.0},   {"4mm", 75500.0, 81000.0},   {"2.5mm", 119980.0, 123000.0},
    {"2mm", 134000.0, 149000.0}, {"1mm", 241000.0, 250000.0}, {"submm", 300000.0, 7500000.0},
};

// MHz to the hertz, whatever the locale.
std::string FormatMHz(double mhz) {
    char buf[32];
    const auto result = std::to_chars(buf, buf + sizeof buf, mhz, std::chars_format::fixed, 6);
    return std::string(buf, result.ptr);
}

bool ParseMHz(const std::string& text, double* out) {
    const char* end = text.data() + text.size();
    double value = 0;
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end || !(value >= 0)) return false;
    *out = value;
    return true;
}

std::string Digits(int value, int width) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "%0*d", width, value);
    return buf;
}

std::string AdifDate(uint32_t secs) {
    DateTimeRec d;
    QFSecondsToDate(secs, &d);
    return Digits(d.year, 4) + Digits(d.month, 2) + Digits(d.day, 2);
}

std::string AdifTime(uint32_t secs) {
    DateTimeRec d;
    QFSecondsToDate(secs, &d);
    return Digits(d.hour, 2) + Digits(d.minute, 2) + Digits(d.second, 2);
}

std::string IsoTime(uint32_t secs) {
    if (secs == 0) return "";
    DateTimeRec d;
    QFSecondsToDate(secs, &d);
    return Digits(d.year, 4) + "-" + Digits(d.month, 2) + "-" + Digits(d.day, 2) + "T" +
           Digits(d.hour, 2) + ":" + Digits(d.minute, 2) + ":" + Digits(d.second, 2) + "Z";
}

bool AllDigits(const std::string& text) {
    if (text.empty()) return false;
    for (char c : text)
        if (!std::isdigit(static_cast<unsigned char>(c))) return false;
    return true;
}

// An ADIF Date (YYYYMMDD, 1930 or later) within the time base (up to 2039).
bool ParseDate(const std::string& text, DateTimeRec* d) {
    if (text.size() != 8 || !AllDigits(text)) return false;
    const int year = std::stoi(text.substr(0, 4));
    const int month = std::stoi(text.substr(4, 2));
    const int day = std::stoi(text.substr(6, 2));
    static const int kDays[12] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (year < 1930 || year > 2039 || month < 1 || month > 12 || day < 1 || day > kDays[month - 1])
        return false;
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    if (month == 2 && day == 29 && !leap) return false;
    d->year = static_cast<int16_t>(year);
    d->month = static_cast<int16_t>(month);
    d->day = static_cast<int16_t>(day);
    return true;
}

// An ADIF Time (HHMM or HHMMSS).
bool ParseTime(const std::string& text, DateTimeRec* d) {
    if ((text.size() != 4 && text.size() != 6) || !AllDigits(text)) return false;
    const int hour = std::stoi(text.substr(0, 2));
    const int minute = std::stoi(text.substr(2, 2));
    const int second = text.size() == 6 ? std::stoi(text.substr(4, 2)) : 0;
    if (hour > 23 || minute > 59 || second > 59) return false;
    d->hour = static_cast<int16_t>(hour);
    d->minute = static_cast<int16_t>(minute);
    d->second = static_cast<int16_t>(second);
    return true;
}

bool IsCallSign(const std::string& call) {
    bool hasDigit = false;
    for (char c : call) {
        if (std::isdigit(static_cast<unsigned char>(c)))
            hasDigit = true;
        else if (!std::isalpha(static_cast<unsigned char>(c)) && c != '/')
            return false;
    }
    return call.size() >= 3 && hasDigit;
}

std::string Upper(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

void AddField(std::string* out, const char* name, const std::string& value) {
    if (value.empty()) return;
    *out += '<';
    *out += name;
    *out += ':';
    *out += std::to_string(value.size());
    *out += '>';
    *out += value;
    *out += ' ';
}

// Plain text fields: ADIF name and where it lives in the contact.
struct TextField {
    const char* adif;
    std::string ContactRec::*field;
};
constexpr TextField kTextFields[] = {
    {"GRIDSQUARE", &ContactRec::grid},
    {"RST_SENT", &ContactRec::rstSent},
    {"RST_RCVD", &ContactRec::rstRcvd},
    {"STATION_CALLSIGN", &ContactRec::myCall},
    {"MY_GRIDSQUARE", &ContactRec::myGrid},
    {"MODE", &ContactRec::mode},
    {"SUBMODE", &ContactRec::submode},
    {"NAME", &ContactRec::name},
    {"QTH", &ContactRec::qth},
    {"COMMENT", &ContactRec::comment},
    {"COUNTRY", &ContactRec::country},
    {"LOTW_QSL_SENT", &ContactRec::lotwSent},
    {"LOTW_QSL_RCVD", &ContactRec::lotwRcvd},
    {"QSL_SENT", &ContactRec::qslSent},
    {"QSL_RCVD", &ContactRec::qslRcvd},
    {kAppTransponder, &ContactRec::transponder},
};

// Fields of one record, names in capitals, in file order.
using Fields = std::vector<std::pair<std::string, std::string>>;

const std::string* Find(const Fields& fields, const char* name) {
    for (const auto& f : fields)
        if (f.first == name) return &f.second;
    return nullptr;
}

// Turns one record into a contact; false with the reason when it cannot be
// kept. Fields it does not use are listed in *unused.
bool ToContact(const Fields& fields, const SatNameTable* names, ContactRec* c, std::string* reason,
               std::vector<std::string>* unused) {
    const std::string* call = Find(fields, "CALL");
    const std::string* date = Find(fields, "QSO_DATE");
    const std::string* time = Find(fields, "TIME_ON");
    if (!call || call->empty()) return *reason = "no CALL", false;
    c->call = Upper(*call);
    if (!IsCallSign(c->call)) return *reason = "CALL '" + *call + "' is not a call sign", false;
    DateTimeRec start{};
    if (!date) return *reason = "no QSO_DATE", false;
    if (!ParseDate(*date, &start)) return *reason = "QSO_DATE '" + *date + "' is not a date", false;
    if (!time) return *reason = "no TIME_ON", false;
    if (!ParseTime(*time, &start)) return *reason = "TIME_ON '" + *time + "' is not a time", false;
    c->startUTC = QFDateToSeconds(&start);

    const std::string* dateOff = Find(fields, "QSO_DATE_OFF");
    const std::string* timeOff = Find(fields, "TIME_OFF");
    if (timeOff) {
        DateTimeRec end = start;
        if (dateOff && !ParseDate(*dateOff, &end))
            return *reason = "QSO_DATE_OFF '" + *dateOff + "' is not a date", false;
        if (!ParseTime(*timeOff, &end))
            return *reason = "TIME_OFF '" + *timeOff + "' is not a time", false;
        c->endUTC = QFDateToSeconds(&end);
        // A contact across midnight logged without QSO_DATE_OFF ends the next day.
        if (!dateOff && c->endUTC < c->startUTC) c->endUTC += 86400;
    }

    const std::string* freq = Find(fields, "FREQ");
    const std::string* freqRx = Find(fields, "FREQ_RX");
    if (freq && !ParseMHz(*freq, &c->uplinkMHz))
        return *reason = "FREQ '" + *freq + "' is not a frequency in MHz", false;
    if (freqRx && !ParseMHz(*freqRx, &c->downlinkMHz))
        return *reason = "FREQ_RX '" + *freqRx + "' is not a frequency in MHz", false;

    const std::string* dxcc = Find(fields, "DXCC");
    if (dxcc && !AllDigits(*dxcc))
        return *reason = "DXCC '" + *dxcc + "' is not an entity number", false;
    if (dxcc) c->dxcc = std::stoi(dxcc->substr(0, 6));

    const std::string* ours = Find(fields, kAppSatellite);
    const std::string* lotw = Find(fields, "SAT_NAME");
    if (ours)
        c->satellite = *ours;
    else if (lotw)
        c->satellite = OurSatName(names, *lotw);

    if (!Find(fields, "STATION_CALLSIGN"))
        if (const std::string* op = Find(fields, "OPERATOR")) c->myCall = Upper(*op);

    for (const auto& [name, value] : fields) {
        bool used = name == "CALL" || name == "QSO_DATE" || name == "TIME_ON" ||
                    name == "QSO_DATE_OFF" || name == "TIME_OFF" || name == "FREQ" ||
                    name == "FREQ_RX" || name == "DXCC" || name == "SAT_NAME" ||
                    name == kAppSatellite || (name == "OPERATOR" && c->myCall == Upper(value));
        // Band and propagation follow from the frequencies and the satellite.
        used = used || (name == "BAND" && freq) || (name == "BAND_RX" && freqRx) ||
               (name == "PROP_MODE" && value == kPropModeSatellite && !c->satellite.empty());
        for (const TextField& t : kTextFields) {
            if (name != t.adif) continue;
            c->*t.field = value;
            used = true;
        }
        if (!used) unused->push_back(name);
    }
    c->myCall = Upper(c->myCall);
    return true;
}

}  // namespace

std::string AdifBand(double mhz) {
    for (const BandEdge& b : kBands)
        if (mhz >= b.lowMHz && mhz <= b.highMHz) return b.name;
    return "";
}

std::string FormatAdif(const std::vector<ContactRec>& contacts, const SatNameTable* names,
                       uint32_t createdUTC) {
    std::string out = "Veloran logbook\n";
    AddField(&out, "ADIF_VER", kAdifVersion);
    AddField(&out, "PROGRAMID", kProgramId);
    AddField(&out, "PROGRAMVERSION", kProgramVersion);
    AddField(&out, "CREATED_TIMESTAMP", AdifDate(createdUTC) + " " + AdifTime(createdUTC));
    out += "<EOH>\n";
    for (const ContactRec& c : contacts) {
        AddField(&out, "CALL", c.call);
        AddField(&out, "QSO_DATE", AdifDate(c.startUTC));
        AddField(&out, "TIME_ON", AdifTime(c.startUTC));
        if (c.endUTC != 0) {
            AddField(&out, "QSO_DATE_OFF", AdifDate(c.endUTC));
            AddField(&out, "TIME_OFF", AdifTime(c.endUTC));
        }
        if (!c.satellite.empty()) {
            AddField(&out, "PROP_MODE", kPropModeSatellite);
            AddField(&out, "SAT_NAME", LotwSatName(names, c.satellite));
        }
        // FREQ and BAND are the transmitted side, FREQ_RX and BAND_RX the
        // received one; for a satellite these are the uplink and the downlink.
        if (c.uplinkMHz > 0) {
            AddField(&out, "FREQ", FormatMHz(c.uplinkMHz));
            AddField(&out, "BAND", AdifBand(c.uplinkMHz));
        }
        if (c.downlinkMHz > 0) {
            AddField(&out, "FREQ_RX", FormatMHz(c.downlinkMHz));
            AddField(&out, "BAND_RX", AdifBand(c.downlinkMHz));
        }
        for (const TextField& t : kTextFields) AddField(&out, t.adif, c.*t.field);
        if (c.dxcc > 0) AddField(&out, "DXCC", std::to_string(c.dxcc));
        AddField(&out, kAppSatellite, c.satellite);
        out += "<EOR>\n";
    }
    return out;
}

std::string FormatCsv(const std::vector<ContactRec>& contacts) {
    auto cell = [](const std::string& text) {
        if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
        std::string quoted = "\"";
        for (char ch : text) {
            if (ch == '"') quoted += '"';
            quoted += ch;
        }
        return quoted + "\"";
    };
    std::string out =
        "start,end,call,grid,rst_sent,rst_rcvd,my_call,my_grid,satellite,transponder,uplink_mhz,"
        "downlink_mhz,mode,submode,name,qth,comment,country,dxcc,lotw_sent,lotw_rcvd,qsl_sent,"
        "qsl_rcvd\n";
    for (const ContactRec& c : contacts) {
        const std::string cells[] = {IsoTime(c.startUTC),
                                     IsoTime(c.endUTC),
                                     c.call,
                                     c.grid,
                                     c.rstSent,
                                     c.rstRcvd,
                                     c.myCall,
                                     c.myGrid,
                                     c.satellite,
                                     c.transponder,
                                     c.uplinkMHz > 0 ? FormatMHz(c.uplinkMHz) : "",
                                     c.downlinkMHz > 0 ? FormatMHz(c.downlinkMHz) : "",
                                     c.mode,
                                     c.submode,
                                     c.name,
                                     c.qth,
                                     c.comment,
                                     c.country,
                                     c.dxcc > 0 ? std::to_string(c.dxcc) : "",
                                     c.lotwSent,
                                     c.lotwRcvd,
                                     c.qslSent,
                                     c.qslRcvd};
        bool first = true;
        for (const std::string& text : cells) {
            if (!first) out += ',';
            out += cell(text);
            first = false;
        }
        out += '\n';
    }
    return out;
}

void ParseAdif(const std::string& text, const SatNameTable* names, AdifImport* out) {
    // A file that does not open with a tag has a header; one that does may
    // still hold header fields before an <EOH>.
    size_t pos = Upper(text).find("<EOH>");
    pos = pos == std::string::npos ? 0 : pos + 5;

    Fields fields;
    std::string problem;    // why the record in hand cannot be kept
    std::string lastField;  // the field whose data ended at pos
    auto finish = [&](bool complete) {
        if (fields.empty() && problem.empty()) return;
        ++out->records;
        const std::string* call = Find(fields, "CALL");
        const std::string label = "record " + std::to_string(out->records) +
                                  (call && !call->empty() ? " (" + *call + ")" : "") + ": ";
        if (!complete && problem.empty()) problem = "no <EOR> at the end of the file";
        ContactRec contact;
        std::vector<std::string> unused;
        if (problem.empty() && ToContact(fields, names, &contact, &problem, &unused)) {
            out->contacts.push_back(std::move(contact));
            if (!unused.empty()) {
                std::string list;
                for (const std::string& u : unused) list += (list.empty() ? "" : ", ") + u;
                out->messages.push_back(label + "not kept: " + list);
            }
        } else {
            ++out->skipped;
            out->messages.push_back(label + "skipped: " + problem);
        }
        fields.clear();
        problem.clear();
        lastField.clear();
    };

    while (pos < text.size()) {
        const size_t lt = text.find('<', pos);
        const size_t gapEnd = lt == std::string::npos ? text.size() : lt;
        if (!lastField.empty() && problem.empty()) {
            for (size_t i = pos; i < gapEnd; ++i) {
                if (std::isspace(static_cast<unsigned char>(text[i]))) continue;
                problem = "text after the data of " + lastField + " (wrong length?)";
                break;
            }
        }
        if (lt == std::string::npos) break;
        const size_t gt = text.find('>', lt);
        if (gt == std::string::npos) {
            if (problem.empty()) problem = "unfinished tag at the end of the file";
            break;
        }
        const std::string tag = text.substr(lt + 1, gt - lt - 1);
        pos = gt + 1;
        lastField.clear();
        const size_t colon = tag.find(':');
        const std::string name = Upper(tag.substr(0, colon));
        if (colon == std::string::npos) {
            if (name == "EOR")
                finish(true);
            else if (name != "EOH" && problem.empty())
                problem = "tag <" + tag + "> has no length";
            continue;
        }
        std::string length = tag.substr(colon + 1);
        length = length.substr(0, length.find(':'));  // drop the data type
        if (!AllDigits(length) || length.size() > 9 || name.empty()) {
            if (problem.empty()) problem = "tag <" + tag + "> has no valid length";
            continue;
        }
        const size_t count = std::stoul(length);
        if (count > text.size() - pos) {
            if (problem.empty())
                problem = name + " is " + length + " characters long, past the end of the file";
            pos = text.size();
            break;
        }
        fields.emplace_back(name, text.substr(pos, count));
        pos += count;
        lastField = name;
    }
    finish(false);
}

}  // namespace veloran
