#include "apps/orva_fire/zones.h"

#include <cmath>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>

#include "ORVA_FireDetection.h"
#include "apps/orva_fire/error.h"

namespace orva_fire {
namespace {

using nlohmann::json;

const size_t k_longest_file = 1 << 20;
const size_t k_longest_name = 100;
const int k_deepest = 8;
const int k_most_pixels = 65536;
const char k_help[] = "; see the section on zones in the manual";

// Where in the file something is, for messages: "'zones.json', zone 'stove', rectangle 2".
class place {
public:
    explicit place(const std::string& file) : m_text("'" + file + "'") {}
    place inside(const std::string& what) const {
        place inner = *this;
        inner.m_text += ", " + what;
        return inner;
    }
    [[noreturn]] void complain(const std::string& what) const { throw usage_error(m_text + ": " + what); }

private:
    std::string m_text;
};

std::string in_quotes(const std::string& text) {
    return "'" + text + "'";
}

std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw io_error("cannot open the zones file '" + path + "'");
    std::string text(k_longest_file + 1, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (file.bad() || (file.fail() && !file.eof())) throw io_error("cannot read the zones file '" + path + "'");
    text.resize(static_cast<size_t>(file.gcount()));
    if (text.size() > k_longest_file) throw usage_error("'" + path + "': a zones file has at most 1 MiB");
    return text;
}

// Notices what the parser itself lets pass: a key that stands twice in one object, and needless depth.
class strict_reader {
public:
    explicit strict_reader(const place& where) : m_where(where) {}

    bool operator()(int depth, json::parse_event_t event, const json& parsed) {
        if (depth > k_deepest) m_where.complain("nested deeper than a zones file is");
        if (event == json::parse_event_t::object_start) m_keys.emplace_back();
        if (event == json::parse_event_t::object_end) m_keys.pop_back();
        if (event == json::parse_event_t::key && !m_keys.back().insert(parsed.get<std::string>()).second) {
            m_where.complain("key " + in_quotes(parsed.get<std::string>()) + " stands twice in one object");
        }
        return true;
    }

private:
    const place& m_where;
    std::vector<std::set<std::string>> m_keys;
};

json parse_strictly(const std::string& text, const place& where) {
    try {
        return json::parse(text, strict_reader(where));
    } catch (const json::exception& error) {
        // The library's text starts with its own error number in brackets.
        const std::string said = error.what();
        const size_t bracket = said.find("] ");
        where.complain("is not JSON: " + (bracket == std::string::npos ? said : said.substr(bracket + 2)));
    }
}

void check_keys(const json& object, std::initializer_list<const char*> known, const place& where) {
    if (!object.is_object()) where.complain(std::string("expected an object in braces, found ") + object.type_name());
    for (const auto& item : object.items()) {
        bool found = false;
        for (const char* key : known) found = found || item.key() == key;
        if (!found) where.complain("unknown key " + in_quotes(item.key()) + k_help);
    }
}

const json& need(const json& object, const char* key, const place& where) {
    const auto found = object.find(key);
    if (found == object.end()) where.complain("key " + in_quotes(key) + " is missing");
    return *found;
}

const json& need_list(const json& object, const char* key, const place& where) {
    const json& list = need(object, key, where);
    if (!list.is_array() || list.empty()) where.complain("key " + in_quotes(key) + " must be a list that is not empty");
    return list;
}

bool is_control(char c) {
    return static_cast<unsigned char>(c) < 32 || c == 127;
}

// The parser has made sure that it is UTF-8.
std::string read_name(const json& zone, const place& where) {
    const json& value = need(zone, "name", where);
    if (!value.is_string()) where.complain("key 'name' must be a text");
    const auto name = value.get<std::string>();
    if (name.empty() || name.size() > k_longest_name) {
        where.complain("key 'name' must have 1 to " + std::to_string(k_longest_name) + " bytes, not " +
                       std::to_string(name.size()));
    }
    for (const char c : name) {
        if (is_control(c)) where.complain("key 'name' must not hold line ends or other control characters");
    }
    return name;
}

std::optional<int> read_grade(const json& zone, const place& where) {
    const auto value = zone.find("grade");
    if (value == zone.end()) return std::nullopt;
    const bool whole = value->is_number_integer();
    if (!whole || *value < 0 || *value > 100) {
        where.complain("key 'grade' must be a whole number from 0 to 100, not " + value->dump());
    }
    return value->get<int>();
}

bool is_percentage(const std::string& text) {
    const size_t digits = text.find_first_not_of("0123456789");
    if (digits == 0 || digits == std::string::npos || text.size() > 20) return false;
    if (text[digits] == '%') return digits + 1 == text.size();
    const size_t end = text.find_first_not_of("0123456789", digits + 1);
    return text[digits] == '.' && end != std::string::npos && end > digits + 1 && text.substr(end) == "%";
}

// 12.5 from "12.5%", whatever decimal sign the process's locale has.
double parse_percentage(const std::string& text) {
    const size_t point = text.find('.');
    const size_t digits = text.find_first_not_of("0123456789");
    double number = std::stod(text.substr(0, digits));
    if (point == std::string::npos) return number;
    const std::string decimals = text.substr(point + 1, text.size() - point - 2);
    return number + std::stod(decimals) / std::pow(10.0, static_cast<double>(decimals.size()));
}

region_value read_value(const json& rectangle, const char* key, const place& where) {
    const json& value = need(rectangle, key, where);
    region_value result;
    if (value.is_number_integer() && value >= 0 && value <= k_most_pixels) {
        result.number = value.get<double>();
        return result;
    }
    if (value.is_string() && is_percentage(value.get<std::string>())) {
        result.number = parse_percentage(value.get<std::string>());
        result.percent = true;
        if (result.number <= 100) return result;
    }
    where.complain("key " + in_quotes(key) + " must be a whole number of pixels or a text like \"12.5%\", not " +
                   value.dump());
}

region read_rectangle(const json& rectangle, const place& where) {
    check_keys(rectangle, {"x", "y", "width", "height"}, where);
    region part;
    part.x = read_value(rectangle, "x", where);
    part.y = read_value(rectangle, "y", where);
    part.width = read_value(rectangle, "width", where);
    part.height = read_value(rectangle, "height", where);
    return part;
}

std::string numbered(const char* what, size_t index) {
    return std::string(what) + " " + std::to_string(index + 1);
}

zone_spec read_zone(const json& value, size_t index, const std::string& path) {
    const place file(path);
    const place by_number = file.inside(numbered("zone", index));
    check_keys(value, {"name", "grade", "rectangles"}, by_number);
    zone_spec zone;
    zone.file = path;
    zone.name = read_name(value, by_number);
    const place where = file.inside("zone " + in_quotes(zone.name));
    zone.grade = read_grade(value, where);
    for (const json& rectangle : need_list(value, "rectangles", where)) {
        zone.parts.push_back(read_rectangle(rectangle, where.inside(numbered("rectangle", zone.parts.size()))));
    }
    return zone;
}

std::string title(const zone_spec& zone) {
    return (zone.file.empty() ? "" : in_quotes(zone.file) + ", ") + "zone " + in_quotes(zone.name);
}

}  // namespace

std::vector<zone_spec> parse_zones(const std::string& text, const std::string& path) {
    const place file(path);
    const json whole = parse_strictly(text, file);
    check_keys(whole, {"zones"}, file);
    std::vector<zone_spec> zones;
    for (const json& value : need_list(whole, "zones", file)) {
        zones.push_back(read_zone(value, zones.size(), path));
    }
    check_names(zones);
    return zones;
}

std::vector<zone_spec> read_zones(const std::string& path) {
    return parse_zones(read_file(path), path);
}

void check_names(const std::vector<zone_spec>& zones) {
    std::set<std::string> names;
    for (const zone_spec& zone : zones) {
        if (!names.insert(zone.name).second) throw usage_error(title(zone) + ": this name occurs twice");
    }
}

std::vector<box> place_zone(const zone_spec& zone, picture_size picture) {
    std::vector<box> places;
    for (const region& part : zone.parts) {
        try {
            places.push_back(place_region(part, picture));
        } catch (const usage_error& error) {
            throw usage_error(title(zone) + ", " + numbered("rectangle", places.size()) + ": " + error.what());
        }
    }
    return places;
}

int count_channels(const std::vector<zone_spec>& zones, picture_size picture, tile_grid tiles, bool ageing) {
    size_t count = 0;
    for (const zone_spec& zone : zones) {
        for (const box& part : place_zone(zone, picture)) count += tile(part, tiles).size();
    }
    if (ageing) count *= 2;
    if (count > FD_MAX_CHANNELS) {
        throw usage_error("the zones need " + std::to_string(count) + " channels of the library, which has " +
                          std::to_string(FD_MAX_CHANNELS) + ": one for each tile of each rectangle" +
                          (ageing ? ", twice that with --max-age. " : ". ") +
                          "Use fewer zones, larger tiles (--tiles 1x1)" + (ageing ? ", or --max-age 0" : ""));
    }
    return static_cast<int>(count);
}

}  // namespace orva_fire
