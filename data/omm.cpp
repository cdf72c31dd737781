// OMM mean elements (CCSDS 502.0, as CelesTrak and Space-Track publish them)
// in CSV, JSON and XML. The keywords are the same in all three; values are
// the TLE-compatible mean elements (SGP4 theory), so they map onto a
// two-line set one to one. JSON and XML are parsed by nlohmann-json and
// pugixml, both without exceptions.

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstring>
#include <functional>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>

#include "data/elementsets.h"

namespace veloran {

namespace {

// Looks a keyword up in one record; false when it is absent.
using FieldGetter = std::function<bool(const char* key, std::string* value)>;

std::string Trimmed(const std::string& s) {
    size_t b = 0, e = s.size();
    while (b < e && std::isspace(static_cast<unsigned char>(s[b]))) ++b;
    while (e > b && std::isspace(static_cast<unsigned char>(s[e - 1]))) --e;
    return s.substr(b, e - b);
}

bool NumberField(const FieldGetter& get, const char* key, double* out) {
    std::string text;
    if (!get(key, &text)) return false;
    text = Trimmed(text);
    if (!text.empty() && text[0] == '+') text.erase(0, 1);
    if (text.empty()) return false;
    const char* end = text.data() + text.size();
    const auto r = std::from_chars(text.data(), end, *out);
    return r.ec == std::errc() && r.ptr == end && std::isfinite(*out);
}

// Optional fields read as 0 when absent; present but unreadable is an error.
bool OptionalNumber(const FieldGetter& get, const char* key, double* out) {
    std::string text;
    *out = 0.0;
    if (!get(key, &text) || Trimmed(text).empty()) return true;
    return NumberField(get, key, out);
}

// "1998-067A" -> "98067A".
std::string DesignatorFromObjectId(const std::string& id) {
    if (id.size() >= 9 && id[4] == '-') return id.substr(2, 2) + id.substr(5, 6);
    return id.substr(0, 8);
}

int32_t CatalogFromText(const std::string& raw) {
    const std::string text = Trimmed(raw);
    if (text.size() == 5 && !std::isdigit(static_cast<unsigned char>(text[0])))
        return ParseCatalogNumber(text.c_str());
    int32_t value = -1;
    const char* end = text.data() + text.size();
    const auto r = std::from_chars(text.data(), end, value);
    return r.ec == std::errc() && r.ptr == end && !text.empty() ? value : -1;
}

// One OMM record into e; false with the reason when a needed value is
// missing or wrong.
bool FromOmm(const FieldGetter& get, OrbitElements* e, std::string* why) {
    std::string text;
    if (get("OBJECT_NAME", &text)) e->longName = Trimmed(text);
    if (get("OBJECT_ID", &text)) e->designator = DesignatorFromObjectId(Trimmed(text));
    if (get("CLASSIFICATION_TYPE", &text) && !Trimmed(text).empty())
        e->classification = Trimmed(text)[0];
    if (!get("NORAD_CAT_ID", &text) || (e->catalog = CatalogFromText(text)) <= 0) {
        *why = "NORAD_CAT_ID is missing or not a number";
        return false;
    }
    if (!get("EPOCH", &text) || !ParseOmmEpoch(text, &e->epochYear, &e->epochDay)) {
        *why = "EPOCH is missing or not a date";
        return false;
    }
    struct Needed {
        const char* key;
        double* value;
    };
    const Needed needed[] = {
        {"MEAN_MOTION", &e->meanMotion},       {"ECCENTRICITY", &e->eccentricity},
        {"INCLINATION", &e->inclination},      {"RA_OF_ASC_NODE", &e->raan},
        {"ARG_OF_PERICENTER", &e->argPerigee}, {"MEAN_ANOMALY", &e->meanAnomaly}};
    for (const Needed& n : needed) {
        if (!NumberField(get, n.key, n.value)) {
            *why = std::string(n.key) + " is missing or not a number";
            return false;
        }
    }
    const Needed optional[] = {{"MEAN_MOTION_DOT", &e->meanMotionDot},
                               {"MEAN_MOTION_DDOT", &e->meanMotionDdot},
                               {"BSTAR", &e->bstar}};
    for (const Needed& n : optional) {
        if (!OptionalNumber(get, n.key, n.value)) {
            *why = std::string(n.key) + " is not a number";
            return false;
        }
    }
    double eph = 0, elset = 0, rev = 0;
    if (!OptionalNumber(get, "EPHEMERIS_TYPE", &eph) ||
        !OptionalNumber(get, "ELEMENT_SET_NO", &elset) ||
        !OptionalNumber(get, "REV_AT_EPOCH", &rev) || std::fabs(elset) > 1e9 ||
        std::fabs(rev) > 1e9 || std::fabs(eph) > 9) {
        *why = "EPHEMERIS_TYPE, ELEMENT_SET_NO or REV_AT_EPOCH is not a number";
        return false;
    }
    e->ephemerisType = static_cast<int32_t>(eph);
    e->elementSetNumber = static_cast<int32_t>(elset);
    e->revolution = static_cast<int32_t>(rev);
    return ElementsPlausible(*e, why);
}

void Take(const FieldGetter& get, std::vector<OrbitElements>* out, ConversionReport* report) {
    OrbitElements e;
    std::string why;
    if (FromOmm(get, &e, &why)) {
        out->push_back(e);
    } else if (report->skipped++ == 0) {
        report->firstProblem = why + (e.longName.empty() ? "" : " (" + e.longName + ")");
    }
}

// Splits one CSV row; double quotes may enclose a field holding commas.
std::vector<std::string> CsvRow(const std::string& line) {
    std::vector<std::string> fields(1);
    bool quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (c == '"') {
            if (quoted && i + 1 < line.size() && line[i + 1] == '"') {
                fields.back() += '"';
                ++i;
            } else {
                quoted = !quoted;
            }
        } else if (c == ',' && !quoted) {
            fields.emplace_back();
        } else if (c != '\r') {
            fields.back() += c;
        }
    }
    return fields;
}

}  // namespace

bool ReadOmmCsv(const std::string& text, std::vector<OrbitElements>* out, ConversionReport* report,
                std::string* error) {
    std::vector<std::string> header;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string line = text.substr(start, end - start);
        start = end + 1;
        if (Trimmed(line).empty()) continue;
        if (header.empty()) {
            header = CsvRow(line);
            for (std::string& h : header) h = Trimmed(h);
            if (header.size() > 0 && header[0].compare(0, 3, "\xEF\xBB\xBF") == 0)
                header[0].erase(0, 3);
            continue;
        }
        const std::vector<std::string> row = CsvRow(line);
        Take(
            [&](const char* key, std::string* value) {
                for (size_t i = 0; i < header.size() && i < row.size(); ++i) {
                    if (header[i] == key) {
                        *value = row[i];
                        return true;
                    }
                }
                return false;
            },
            out, report);
    }
    bool hasColumns = false;
    for (const std::string& h : header) hasColumns = hasColumns || h == "NORAD_CAT_ID";
    if (!hasColumns) {
        *error = "the CSV table has no NORAD_CAT_ID column";
        return false;
    }
    return true;
}

bool ReadOmmJson(const std::string& text, std::vector<OrbitElements>* out, ConversionReport* report,
                 std::string* error) {
    const nlohmann::json doc = nlohmann::json::parse(text, nullptr, false);
    if (doc.is_discarded()) {
        *error = "not valid JSON";
        return false;
    }
    const auto takeOne = [&](const nlohmann::json& record) {
        if (!record.is_object()) {
            if (report->skipped++ == 0) report->firstProblem = "an entry is not a record";
            return;
        }
        Take(
            [&record](const char* key, std::string* value) {
                const auto it = record.find(key);
                if (it == record.end() || it->is_null()) return false;
                // Space-Track writes every value as a string, CelesTrak numbers
                // as numbers; dump() gives the shortest text that reads back
                // the same double.
                *value = it->is_string() ? it->get_ref<const std::string&>() : it->dump();
                return it->is_string() || it->is_number();
            },
            out, report);
    };
    if (doc.is_array()) {
        for (const nlohmann::json& record : doc) takeOne(record);
    } else {
        takeOne(doc);
    }
    return true;
}

bool ReadOmmXml(const std::string& text, std::vector<OrbitElements>* out, ConversionReport* report,
                std::string* error) {
    pugi::xml_document doc;
    const pugi::xml_parse_result parsed = doc.load_buffer(text.data(), text.size());
    if (!parsed) {
        *error = std::string("not valid XML: ") + parsed.description() + " at byte " +
                 std::to_string(parsed.offset);
        return false;
    }
    // Each <omm> holds one set; its keywords sit at different depths
    // (metadata, meanElements, tleParameters), so they are looked up anywhere
    // beneath it.
    std::vector<pugi::xml_node> records;
    struct Collect : pugi::xml_tree_walker {
        std::vector<pugi::xml_node>* found;
        bool for_each(pugi::xml_node& node) override {
            if (std::strcmp(node.name(), "omm") == 0) found->push_back(node);
            return true;
        }
    } walker;
    walker.found = &records;
    doc.traverse(walker);
    if (records.empty()) {
        *error = "the XML holds no <omm> element";
        return false;
    }
    for (const pugi::xml_node& record : records) {
        Take(
            [&record](const char* key, std::string* value) {
                const pugi::xml_node node = record.find_node(
                    [key](pugi::xml_node n) { return std::strcmp(n.name(), key) == 0; });
                if (!node) return false;
                *value = node.child_value();
                return true;
            },
            out, report);
    }
    return true;
}

}  // namespace veloran
