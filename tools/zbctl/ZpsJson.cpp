#include "ZpsJson.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <tuple>

#include "ZbctlError.h"

namespace TesselFX {
namespace zbctl {

namespace {

using Json = nlohmann::json;
using OrderedJson = nlohmann::ordered_json;

constexpr unsigned int kFirstMasterParameter = 2800;
constexpr uint16_t kDefaultSoundModeFlag = 0x1;

[[noreturn]] void Fail(const std::string& path, const std::string& what) {
    throw ZbctlError(path + ": " + what);
}

void CheckKeys(const Json& object, const std::string& path, const std::set<std::string>& known) {
    if (!object.is_object()) Fail(path, "must be an object");
    for (const auto& item : object.items()) {
        if (known.count(item.key()) == 0) Fail(path, "unknown key \"" + item.key() + "\"");
    }
}

uint64_t Unsigned(const Json& value, const std::string& path, uint64_t max) {
    const bool negative =
        value.is_number_integer() && !value.is_number_unsigned() && value.get<int64_t>() < 0;
    if (!value.is_number_integer() || negative || value.get<uint64_t>() > max) {
        Fail(path, "must be a whole number from 0 to " + std::to_string(max));
    }
    return value.get<uint64_t>();
}

uint64_t UnsignedKey(const std::string& key, const std::string& path, uint64_t max) {
    if (key.empty() || key.size() > 10 ||
        key.find_first_not_of("0123456789") != std::string::npos || std::stoull(key) > max) {
        Fail(path, "key \"" + key + "\" must be a whole number from 0 to " + std::to_string(max));
    }
    return std::stoull(key);
}

double Number(const Json& value, const std::string& path) {
    if (!value.is_number()) Fail(path, "must be a number");
    return value.get<double>();
}

std::string Text(const Json& value, const std::string& path) {
    if (!value.is_string()) Fail(path, "must be a string");
    return value.get<std::string>();
}

uint32_t MaskFromSubtypes(const Json& list, const std::string& path) {
    if (!list.is_array()) Fail(path, "must be a list of subtype numbers");
    uint32_t mask = 0;
    for (size_t i = 0; i < list.size(); ++i) {
        mask |= 1u << Unsigned(list[i], path + "[" + std::to_string(i) + "]", 31);
    }
    return mask;
}

OrderedJson SubtypesFromMask(uint32_t mask) {
    OrderedJson list = OrderedJson::array();
    for (unsigned int bit = 0; bit < 32; ++bit) {
        if (mask & (1u << bit)) list.push_back(bit);
    }
    return list;
}

// The shortest decimal that reads back as the same float, so that 0.1 stays 0.1.
double ShortestFloat(float value) {
    if (!std::isfinite(value)) return value;
    char text[32];
    for (int precision = 1; precision <= 9; ++precision) {
        std::snprintf(text, sizeof(text), "%.*g", precision, static_cast<double>(value));
        if (std::strtof(text, nullptr) == value) break;
    }
    return std::strtod(text, nullptr);
}

float ToFloat(const Json& value, const std::string& path) {
    const double number = Number(value, path);
    const float narrowed = static_cast<float>(number);
    if (std::isfinite(number) && !std::isfinite(narrowed)) Fail(path, "does not fit in a float");
    return narrowed;
}

std::vector<char> FromHex(const std::string& text, const std::string& path) {
    if (text.size() % 2 != 0) Fail(path, "hexadecimal text needs an even number of digits");
    std::vector<char> bytes;
    for (size_t i = 0; i < text.size(); i += 2) {
        const std::string pair = text.substr(i, 2);
        if (pair.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
            Fail(path, "\"" + pair + "\" is not a hexadecimal byte");
        }
        bytes.push_back(static_cast<char>(std::stoul(pair, nullptr, 16)));
    }
    return bytes;
}

std::string ToHex(const std::vector<char>& bytes) {
    static const char kDigits[] = "0123456789abcdef";
    std::string text;
    for (char byte : bytes) {
        text += kDigits[(static_cast<unsigned char>(byte) >> 4) & 0xF];
        text += kDigits[static_cast<unsigned char>(byte) & 0xF];
    }
    return text;
}

// A JSON object of a map keyed by number, built in one pass: the keys are unique already, and
// an ordered object looks up every key it is given.
template <typename Map, typename ToValue>
OrderedJson ObjectOf(const Map& map, ToValue toValue) {
    OrderedJson object = OrderedJson::object();
    auto& members = object.get_ref<OrderedJson::object_t&>();
    members.reserve(map.size());
    for (const auto& item : map)
        members.emplace_back(std::to_string(item.first), toValue(item.second));
    return object;
}

LinkLawEntry LinkLawFromJson(const Json& json, const std::string& path, WarningList& warnings) {
    CheckKeys(json, path, {"source", "master", "target", "points", "method", "version", "extra"});
    for (const char* key : {"source", "target", "points"}) {
        if (!json.contains(key)) Fail(path, std::string("\"") + key + "\" is missing");
    }
    LinkLawEntry entry;
    entry.SourceControlId =
        static_cast<uint32_t>(Unsigned(json["source"], path + ".source", 0xFFFFFFFF));
    entry.MasterControlId = entry.SourceControlId + kFirstMasterParameter;
    if (json.contains("master")) {
        entry.MasterControlId =
            static_cast<uint32_t>(Unsigned(json["master"], path + ".master", 0xFFFFFFFF));
    }
    entry.TargetParamId =
        static_cast<uint32_t>(Unsigned(json["target"], path + ".target", 0xFFFFFFFF));
    if (json.contains("method")) entry.ConversionMethod = Text(json["method"], path + ".method");
    if (entry.ConversionMethod != "Linear") {
        warnings.Add("link-law method", [&] {
            return path + ".method: the library computes only \"Linear\" link laws; \"" +
                   entry.ConversionMethod + "\" gives the target no value";
        });
    }
    if (json.contains("version")) {
        entry.version = static_cast<uint32_t>(Unsigned(json["version"], path + ".version", 1));
    }
    const Json& points = json["points"];
    if (!points.is_array()) Fail(path + ".points", "must be a list of [master, target] pairs");
    for (size_t i = 0; i < points.size(); ++i) {
        const std::string pointPath = path + ".points[" + std::to_string(i) + "]";
        if (!points[i].is_array() || points[i].size() != 2)
            Fail(pointPath, "must be [master, target]");
        entry.masterValues.push_back(ToFloat(points[i][0], pointPath + "[0]"));
        entry.targetValues.push_back(ToFloat(points[i][1], pointPath + "[1]"));
        if (i > 0 && entry.masterValues[i] < entry.masterValues[i - 1]) {
            warnings.Add("link-law points", [&] {
                return pointPath +
                       ": master value below the one before; the library interpolates between "
                       "points in ascending order only";
            });
        }
    }
    if (json.contains("extra")) {
        const Json& extra = json["extra"];
        if (!extra.is_array() || extra.size() != 2) Fail(path + ".extra", "must be two numbers");
        entry.extraValue0 = ToFloat(extra[0], path + ".extra[0]");
        entry.extraValue1 = ToFloat(extra[1], path + ".extra[1]");
    }
    return entry;
}

OrderedJson LinkLawToJson(const LinkLawEntry& entry) {
    OrderedJson json;
    json["source"] = entry.SourceControlId;
    if (entry.MasterControlId != entry.SourceControlId + kFirstMasterParameter) {
        json["master"] = entry.MasterControlId;
    }
    json["target"] = entry.TargetParamId;
    if (entry.ConversionMethod != "Linear") json["method"] = entry.ConversionMethod;
    if (entry.version != 1) json["version"] = entry.version;
    OrderedJson points = OrderedJson::array();
    for (size_t i = 0; i < entry.masterValues.size(); ++i) {
        const float target = i < entry.targetValues.size() ? entry.targetValues[i] : 0.0f;
        points.push_back({ShortestFloat(entry.masterValues[i]), ShortestFloat(target)});
    }
    json["points"] = points;
    if (entry.extraValue0 != 0.0f || entry.extraValue1 != 0.0f) {
        json["extra"] = {ShortestFloat(entry.extraValue0), ShortestFloat(entry.extraValue1)};
    }
    return json;
}

ZpsPreset PresetFromJson(const Json& json, const std::string& path, WarningList& warnings) {
    CheckKeys(json, path,
              {"output_mode", "sound_mode", "subtypes", "name", "remarks", "default_sound_mode",
               "flags", "priority", "parameters", "link_laws", "chunks"});
    for (const char* key : {"output_mode", "sound_mode", "name"}) {
        if (!json.contains(key)) Fail(path, std::string("\"") + key + "\" is missing");
    }
    ZpsPreset preset;
    preset.outputMode =
        static_cast<uint32_t>(Unsigned(json["output_mode"], path + ".output_mode", 255));
    preset.soundMode =
        static_cast<uint32_t>(Unsigned(json["sound_mode"], path + ".sound_mode", 255));
    if (json.contains("subtypes"))
        preset.subtypeMask = MaskFromSubtypes(json["subtypes"], path + ".subtypes");
    preset.name = Text(json["name"], path + ".name");
    if (json.contains("remarks")) preset.remarks = Text(json["remarks"], path + ".remarks");
    if (json.contains("flags"))
        preset.flags = static_cast<uint16_t>(Unsigned(json["flags"], path + ".flags", 0xFFFF));
    if (json.contains("default_sound_mode")) {
        if (!json["default_sound_mode"].is_boolean())
            Fail(path + ".default_sound_mode", "must be true or false");
        if (json["default_sound_mode"].get<bool>()) preset.flags |= kDefaultSoundModeFlag;
    }
    if (json.contains("priority")) {
        preset.priority = static_cast<uint8_t>(Unsigned(json["priority"], path + ".priority", 255));
    }
    if (json.contains("parameters")) {
        const Json& parameters = json["parameters"];
        if (!parameters.is_object()) Fail(path + ".parameters", "must be an object of id: value");
        for (const auto& item : parameters.items()) {
            const std::string itemPath = path + ".parameters." + item.key();
            const auto id =
                static_cast<unsigned int>(UnsignedKey(item.key(), path + ".parameters", 0xFFFF));
            const double value = Number(item.value(), itemPath);
            if (!preset.parameters.emplace(id, value).second) {
                warnings.Add("parameter twice", [&] {
                    return itemPath + ": parameter " + std::to_string(id) +
                           " again; this value is the one kept";
                });
                preset.parameters[id] = value;
            }
        }
    }
    if (json.contains("link_laws")) {
        const Json& laws = json["link_laws"];
        if (!laws.is_array()) Fail(path + ".link_laws", "must be a list");
        for (size_t i = 0; i < laws.size(); ++i) {
            preset.linkLaws.push_back(
                LinkLawFromJson(laws[i], path + ".link_laws[" + std::to_string(i) + "]", warnings));
        }
    }
    if (json.contains("chunks")) {
        const Json& chunks = json["chunks"];
        if (!chunks.is_object()) Fail(path + ".chunks", "must be an object of index: hex bytes");
        for (const auto& item : chunks.items()) {
            const auto index =
                static_cast<unsigned int>(UnsignedKey(item.key(), path + ".chunks", 0xFFFF));
            const std::string itemPath = path + ".chunks." + item.key();
            preset.chunks[index] = FromHex(Text(item.value(), itemPath), itemPath);
        }
    }
    return preset;
}

OrderedJson PresetToJson(const ZpsPreset& preset) {
    OrderedJson json;
    json["output_mode"] = preset.outputMode;
    json["sound_mode"] = preset.soundMode;
    if (preset.subtypeMask != 0) json["subtypes"] = SubtypesFromMask(preset.subtypeMask);
    json["name"] = preset.name;
    if (!preset.remarks.empty()) json["remarks"] = preset.remarks;
    if (preset.flags & kDefaultSoundModeFlag) json["default_sound_mode"] = true;
    if (preset.flags & ~kDefaultSoundModeFlag)
        json["flags"] = preset.flags & ~kDefaultSoundModeFlag;
    if (preset.priority != 0) json["priority"] = preset.priority;
    if (!preset.parameters.empty()) {
        json["parameters"] = ObjectOf(preset.parameters, [](double value) { return value; });
    }
    if (!preset.linkLaws.empty()) {
        OrderedJson laws = OrderedJson::array();
        for (const LinkLawEntry& entry : preset.linkLaws) laws.push_back(LinkLawToJson(entry));
        json["link_laws"] = laws;
    }
    if (!preset.chunks.empty()) json["chunks"] = ObjectOf(preset.chunks, ToHex);
    return json;
}

std::vector<ZpsPreset> PresetsFromJson(const Json& list, const std::string& path,
                                       WarningList& warnings) {
    if (!list.is_array()) Fail(path, "must be a list of presets");
    std::vector<ZpsPreset> presets;
    std::map<std::tuple<uint32_t, uint32_t, uint32_t>, std::string> seen;  // om, sm, mask
    std::map<uint32_t, std::pair<uint32_t, std::string>> defaults;         // om: sm, path
    for (size_t i = 0; i < list.size(); ++i) {
        const std::string presetPath = path + "[" + std::to_string(i) + "]";
        const ZpsPreset& preset =
            presets.emplace_back(PresetFromJson(list[i], presetPath, warnings));
        const std::string modes =
            "om " + std::to_string(preset.outputMode) + ", sm " + std::to_string(preset.soundMode);
        const auto first = seen.emplace(
            std::make_tuple(preset.outputMode, preset.soundMode, preset.subtypeMask), presetPath);
        if (!first.second) {
            warnings.Add("preset twice", [&] {
                return presetPath + ": " + modes + ", subtypes " +
                       SubtypesFromMask(preset.subtypeMask).dump() + " again (as " +
                       first.first->second + "): the library keeps only this one";
            });
        }
        if ((preset.flags & kDefaultSoundModeFlag) == 0) continue;
        const auto other =
            defaults.emplace(preset.outputMode, std::make_pair(preset.soundMode, presetPath));
        if (!other.second && other.first->second.first != preset.soundMode) {
            warnings.Add("default sound mode twice", [&] {
                return presetPath + ": a second default sound mode for output mode " +
                       std::to_string(preset.outputMode) + ": sound mode " +
                       std::to_string(preset.soundMode) + ", besides sound mode " +
                       std::to_string(other.first->second.first) + " (" +
                       other.first->second.second + ")";
            });
        }
    }
    return presets;
}

// Writes an object or a list member by member in the layout of dump(2), at depth levels of
// indent, so that a list of presets is written without its whole tree.
class JsonWriter {
  public:
    JsonWriter(std::ostream& out, size_t depth, char open)
        : m_out(out), m_depth(depth), m_close(open == '{' ? '}' : ']') {
        m_out << open;
    }
    /// Starts the next member of an object; its value follows.
    void Key(const char* key) {
        Element();
        m_out << '"' << key << "\": ";
    }
    /// Starts the next member of a list; its value follows.
    void Element() {
        m_out << (m_empty ? "\n" : ",\n") << std::string(2 * (m_depth + 1), ' ');
        m_empty = false;
    }
    /// Writes a member's value.
    void Value(const OrderedJson& value) {
        const std::string text = value.dump(2, ' ', false, Json::error_handler_t::replace);
        const std::string indent = "\n" + std::string(2 * (m_depth + 1), ' ');
        size_t start = 0;
        for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
            m_out.write(text.data() + start, static_cast<std::streamsize>(end - start));
            m_out << indent;
        }
        m_out.write(text.data() + start, static_cast<std::streamsize>(text.size() - start));
    }
    void End() {
        if (!m_empty) m_out << "\n" << std::string(2 * m_depth, ' ');
        m_out << m_close;
    }

  private:
    std::ostream& m_out;
    size_t m_depth;
    char m_close;
    bool m_empty = true;
};

void PrintPresets(std::ostream& out, const ZpsPresetStream& presets, bool user, size_t depth) {
    JsonWriter list(out, depth, '[');
    presets.forEach(user, [&list](const ZpsPreset& preset) {
        list.Element();
        list.Value(PresetToJson(preset));
    });
    list.End();
}

}  // namespace

Json ParseZpsJson(const std::vector<char>& text, WarningList& warnings) {
    // The parser reports a key given twice by no event of its own, so the keys of every open
    // object are tracked, with the path of each object and list for the warning.
    struct Open {
        std::string path;
        std::set<std::string> keys;
        std::string key;   // of an object: the key of the value being read
        size_t index = 0;  // of a list: the index of the value being read
        bool list = false;
    };
    std::vector<Open> open;
    const auto childPath = [&open]() -> std::string {
        if (open.empty()) return "";
        const Open& parent = open.back();
        if (parent.list) return parent.path + "[" + std::to_string(parent.index) + "]";
        return parent.path.empty() ? parent.key : parent.path + "." + parent.key;
    };
    const Json::parser_callback_t track = [&](int, Json::parse_event_t event, Json& parsed) {
        switch (event) {
            case Json::parse_event_t::object_start:
            case Json::parse_event_t::array_start:
                open.push_back({childPath(), {}, "", 0, event == Json::parse_event_t::array_start});
                break;
            case Json::parse_event_t::key:
                if (!open.back().keys.insert(parsed.get<std::string>()).second) {
                    warnings.Add("key twice", [&] {
                        return (open.back().path.empty() ? "(top)" : open.back().path) +
                               ": key \"" + parsed.get<std::string>() +
                               "\" given twice; the later value is the one kept";
                    });
                }
                open.back().key = parsed.get<std::string>();
                break;
            case Json::parse_event_t::object_end:
            case Json::parse_event_t::array_end:
                open.pop_back();
                if (!open.empty() && open.back().list) ++open.back().index;
                break;
            case Json::parse_event_t::value:
                if (!open.empty() && open.back().list) ++open.back().index;
                break;
        }
        return true;
    };
    try {
        return Json::parse(text.begin(), text.end(), track);
    } catch (const Json::exception& e) {
        // A syntax error, or a number too large for a double (out_of_range).
        throw ZbctlError(e.what());
    }
}

ZpsDocument ZpsFromJson(const Json& json, WarningList& warnings) {
    CheckKeys(json, "(top)", {"information", "tags", "remarks", "presets", "user"});
    ZpsDocument document;
    if (json.contains("information")) {
        const Json& info = json["information"];
        CheckKeys(info, "information", {"value", "bytes", "word", "reserved"});
        ZpsInformation result;
        if (info.contains("value"))
            result.value =
                static_cast<uint32_t>(Unsigned(info["value"], "information.value", 0xFFFFFFFF));
        if (info.contains("word"))
            result.word =
                static_cast<uint32_t>(Unsigned(info["word"], "information.word", 0xFFFFFFFF));
        if (info.contains("bytes")) {
            const Json& bytes = info["bytes"];
            if (!bytes.is_array() || bytes.size() != 4)
                Fail("information.bytes", "must be four numbers");
            for (size_t i = 0; i < 4; ++i) {
                result.bytes[i] = static_cast<uint8_t>(
                    Unsigned(bytes[i], "information.bytes[" + std::to_string(i) + "]", 255));
            }
        }
        if (info.contains("reserved")) {
            const Json& reserved = info["reserved"];
            if (!reserved.is_array() || reserved.size() != 2)
                Fail("information.reserved", "must be two numbers");
            for (size_t i = 0; i < 2; ++i) {
                result.reserved[i] = static_cast<uint32_t>(Unsigned(
                    reserved[i], "information.reserved[" + std::to_string(i) + "]", 0xFFFFFFFF));
            }
        }
        document.information = result;
    }
    if (json.contains("tags")) {
        const Json& tags = json["tags"];
        if (!tags.is_object()) Fail("tags", "must be an object of id: name");
        for (const auto& item : tags.items()) {
            const auto id = static_cast<unsigned int>(UnsignedKey(item.key(), "tags", 255));
            document.tags[id] = Text(item.value(), "tags." + item.key());
        }
    }
    if (json.contains("remarks")) document.remarks = Text(json["remarks"], "remarks");
    if (json.contains("presets"))
        document.systemPresets = PresetsFromJson(json["presets"], "presets", warnings);
    if (json.contains("user")) {
        const Json& user = json["user"];
        CheckKeys(user, "user", {"enabled_subtypes", "presets"});
        ZpsUserModes modes;
        if (user.contains("enabled_subtypes")) {
            const Json& list = user["enabled_subtypes"];
            if (!list.is_array()) Fail("user.enabled_subtypes", "must be a list");
            for (size_t i = 0; i < list.size(); ++i) {
                const std::string path = "user.enabled_subtypes[" + std::to_string(i) + "]";
                CheckKeys(list[i], path, {"output_mode", "sound_mode", "subtypes"});
                for (const char* key : {"output_mode", "sound_mode", "subtypes"}) {
                    if (!list[i].contains(key))
                        Fail(path, std::string("\"") + key + "\" is missing");
                }
                ZpsEnabledMask record;
                record.outputMode = static_cast<uint32_t>(
                    Unsigned(list[i]["output_mode"], path + ".output_mode", 0xFFFF));
                record.soundMode = static_cast<uint32_t>(
                    Unsigned(list[i]["sound_mode"], path + ".sound_mode", 0xFFFF));
                record.mask = MaskFromSubtypes(list[i]["subtypes"], path + ".subtypes");
                modes.enabledMasks.push_back(record);
            }
        }
        if (user.contains("presets"))
            modes.presets = PresetsFromJson(user["presets"], "user.presets", warnings);
        document.user = modes;
    }
    return document;
}

void PrintZpsJson(std::ostream& out, const ZpsDocument& document, const ZpsPresetStream& presets) {
    JsonWriter top(out, 0, '{');
    if (document.information) {
        const ZpsInformation& info = *document.information;
        OrderedJson json = OrderedJson::object();
        if (info.value != 0) json["value"] = info.value;
        if (info.bytes[0] != 0 || info.bytes[1] != 0 || info.bytes[2] != 0 || info.bytes[3] != 0) {
            json["bytes"] = {info.bytes[0], info.bytes[1], info.bytes[2], info.bytes[3]};
        }
        if (info.word != 0) json["word"] = info.word;
        if (info.reserved[0] != 0 || info.reserved[1] != 0)
            json["reserved"] = {info.reserved[0], info.reserved[1]};
        top.Key("information");
        top.Value(json);
    }
    if (!document.tags.empty()) {
        top.Key("tags");
        top.Value(ObjectOf(document.tags, [](const std::string& name) { return name; }));
    }
    if (document.remarks) {
        top.Key("remarks");
        top.Value(*document.remarks);
    }
    if (document.systemPresets) {
        top.Key("presets");
        PrintPresets(out, presets, false, 1);
    }
    if (document.user) {
        top.Key("user");
        JsonWriter user(out, 1, '{');
        OrderedJson masks = OrderedJson::array();
        for (const ZpsEnabledMask& record : document.user->enabledMasks) {
            OrderedJson json;
            json["output_mode"] = record.outputMode;
            json["sound_mode"] = record.soundMode;
            json["subtypes"] = SubtypesFromMask(record.mask);
            masks.push_back(json);
        }
        if (!masks.empty()) {
            user.Key("enabled_subtypes");
            user.Value(masks);
        }
        if (presets.userCount != 0) {
            user.Key("presets");
            PrintPresets(out, presets, true, 2);
        }
        user.End();
    }
    top.End();
    out << "\n";
}

}  // namespace zbctl
}  // namespace TesselFX
