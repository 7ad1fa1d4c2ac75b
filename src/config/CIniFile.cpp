#include "config/CIniFile.h"

#include <strings.h>

#include <cstring>
#include <vector>

#include "config/StringUtils.h"
#include "log/TesselLog.h"

namespace TesselFX {

namespace {

bool IsBlankOrTab(char c) { return c == ' ' || c == '\t'; }

bool IsLineSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

}  // namespace

template <typename Map>
typename Map::mapped_type::element_type* CIniFile::FindEntry(const Map& map,
                                                             const std::string& name) {
    auto it = map.find(Trim(name));
    return it == map.end() ? nullptr : it->second.get();
}

template <typename Map, typename Owner>
typename Map::mapped_type::element_type* CIniFile::GetOrCreateEntry(Map& map,
                                                                    const std::string& name,
                                                                    Owner* owner) {
    using Entry = typename Map::mapped_type::element_type;
    const std::string trimmed = Trim(name);
    auto it = map.find(trimmed);
    if (it == map.end()) it = map.emplace(trimmed, std::make_unique<Entry>(owner, trimmed)).first;
    return it->second.get();
}

template <typename Map>
void CIniFile::RemoveEntry(Map& map, const typename Map::mapped_type::element_type* entry) {
    if (entry == nullptr) return;
    auto it = map.find(entry->GetName());
    if (it != map.end() && it->second.get() == entry) map.erase(it);
}

template <typename Map>
bool CIniFile::RenameEntry(Map& map, const std::string& oldName, const std::string& newName) {
    const std::string trimmedNew = Trim(newName);
    if (map.find(trimmedNew) != map.end()) return false;
    auto node = map.extract(Trim(oldName));
    if (node.empty()) return false;
    node.key() = trimmedNew;
    node.mapped()->m_name = trimmedNew;
    map.insert(std::move(node));
    return true;
}

bool CIniFile::NameLess::operator()(const std::string& a, const std::string& b) const {
    return strcasecmp(a.c_str(), b.c_str()) < 0;
}

std::string CIniFile::Trim(const std::string& text) {
    size_t begin = 0;
    size_t end = text.size();
    while (begin < end && IsBlankOrTab(text[begin])) ++begin;
    while (end > begin && IsBlankOrTab(text[end - 1])) --end;
    return text.substr(begin, end - begin);
}

CIniFile::CKey::CKey(CSection* owner, const std::string& name) : m_pSection(owner), m_name(name) {}

CIniFile::CSection::CSection(CIniFile* owner, const std::string& name)
    : m_pIniFile(owner), m_name(name) {}

CIniFile::CKey* CIniFile::CSection::GetKey(const std::string& name) const {
    return FindEntry(m_keys, name);
}

CIniFile::CKey* CIniFile::CSection::GetOrCreateKey(const std::string& name) {
    return GetOrCreateEntry(m_keys, name, this);
}

void CIniFile::CSection::RemoveKey(const std::string& name) { m_keys.erase(Trim(name)); }

void CIniFile::CSection::RemoveKey(CKey* key) { RemoveEntry(m_keys, key); }

bool CIniFile::CSection::RenameKey(const std::string& oldName, const std::string& newName) {
    return RenameEntry(m_keys, oldName, newName);
}

CIniFile::CIniFile() = default;

CIniFile::~CIniFile() = default;

bool CIniFile::LoadFile(const std::string& path, bool merge) {
    FILE* stream = std::fopen(path.c_str(), "rbe");
    if (stream == nullptr) return false;
    LoadStream(stream, merge);
    std::fclose(stream);
    return true;
}

void CIniFile::LoadStream(FILE* stream, bool merge) {
    if (stream == nullptr) return;
    // The length from the end position only sizes the buffer: a stream that cannot seek or lies
    // about its length (a directory, a pipe) is read until its end or its first error.
    long length = -1;
    if (std::fseek(stream, 0, SEEK_END) == 0) length = std::ftell(stream);
    std::rewind(stream);
    std::vector<char> buffer;
    if (length > 0 && length < (1L << 26)) buffer.reserve(static_cast<size_t>(length) + 1);
    char chunk[4096];
    size_t got = 0;
    while ((got = std::fread(chunk, 1, sizeof(chunk), stream)) > 0) {
        buffer.insert(buffer.end(), chunk, chunk + got);
    }
    buffer.push_back('\0');
    LoadMemory(std::string(buffer.data()), merge);
}

void CIniFile::LoadMemory(const std::string& text, bool merge) {
    if (!merge) m_sections.clear();
    const std::string content(text.c_str());  // the text ends at its first NUL
    CSection* current = nullptr;
    size_t start = 0;
    while (start <= content.size()) {
        size_t end = content.find('\n', start);
        if (end == std::string::npos) end = content.size();
        std::string line = content.substr(start, end - start);
        start = end + 1;

        size_t first = 0;
        while (first < line.size() && IsBlankOrTab(line[first])) ++first;
        line.erase(0, first);
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();

        if (line.empty() || line[0] == '#' || line[0] == ';') continue;

        size_t last = line.size();
        while (last > 0 && IsLineSpace(line[last - 1])) --last;
        if (line[0] == '[' && last > 0 && line[last - 1] == ']') {
            // The name is cut from the whole line, so trailing blanks keep the bracket.
            current = GetOrCreateSection(line.substr(1, line.size() - 2));
            continue;
        }

        const size_t equals = line.find('=');
        if (equals != std::string::npos && equals > 0) {
            if (current != nullptr) {
                current->GetOrCreateKey(line.substr(0, equals))->SetValue(line.substr(equals + 1));
            }
        }
    }
    Dump();
}

bool CIniFile::Save(const std::string& path) const {
    FILE* stream = std::fopen(path.c_str(), "wbe");
    if (stream == nullptr) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "CIniFile::Save failed on file %s", path.c_str());
        return false;
    }
    std::string text;
    for (const auto& section : m_sections) {
        text += "[" + section.second->GetName() + "]\n";
        for (const auto& key : section.second->GetKeys()) {
            text += key.second->GetName() + "=" + key.second->GetValue() + "\n";
        }
    }
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fclose(stream);
    return true;
}

void CIniFile::Dump() const {
    if (!TESSEL_LOG_ON(1, TESSEL_LOG_FXModule)) return;
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "Dump");
    for (const auto& section : m_sections) {
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "[%s]", section.second->GetName().c_str());
        for (const auto& key : section.second->GetKeys()) {
            TESSEL_LOG(1, TESSEL_LOG_FXModule, "%s=%s", key.second->GetName().c_str(),
                       key.second->GetValue().c_str());
        }
    }
}

CIniFile::CSection* CIniFile::GetSection(const std::string& name) const {
    return FindEntry(m_sections, name);
}

CIniFile::CSection* CIniFile::GetOrCreateSection(const std::string& name) {
    return GetOrCreateEntry(m_sections, name, this);
}

void CIniFile::RemoveSection(const std::string& name) { m_sections.erase(Trim(name)); }

void CIniFile::RemoveSection(CSection* section) { RemoveEntry(m_sections, section); }

bool CIniFile::RenameSection(const std::string& oldName, const std::string& newName) {
    return RenameEntry(m_sections, oldName, newName);
}

bool CIniFile::RenameKey(const std::string& section, const std::string& oldName,
                         const std::string& newName) {
    CSection* found = GetSection(section);
    return found != nullptr && found->RenameKey(oldName, newName);
}

std::string CIniFile::GetValue(const std::string& section, const std::string& key) const {
    const CSection* found = GetSection(section);
    const CKey* value = found == nullptr ? nullptr : found->GetKey(key);
    return value == nullptr ? std::string() : value->GetValue();
}

void CIniFile::SetValue(const std::string& section, const std::string& key,
                        const std::string& value) {
    GetOrCreateSection(section)->GetOrCreateKey(key)->SetValue(value);
}

bool CIniFile::LoadNumber(const std::string& section, const std::string& key, bool hex,
                          int32_t& out) const {
    const std::string value = GetValue(section, key);
    if (value.empty()) return false;
    const char* cursor = value.c_str();
    while (*cursor != '\0' && std::strchr(" \t\n\v\f\r", *cursor) != nullptr) ++cursor;
    if (*cursor == '\0') {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "sscanf failed");
        return false;
    }
    int32_t number = out;
    if (hex) {
        uint32_t unsignedNumber = 0;
        if (ScanUint(cursor, 16, unsignedNumber)) number = static_cast<int32_t>(unsignedNumber);
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "CIniFile::LoadHexVal %s ms %d", Trim(key).c_str(),
                   number);
    } else {
        ScanInt(cursor, number);
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "CIniFile::LoadIntVal %s ms %d", Trim(key).c_str(),
                   number);
    }
    out = number;
    return true;
}

bool CIniFile::LoadIntVal(const std::string& section, const std::string& key, int32_t& out) const {
    return LoadNumber(section, key, false, out);
}

bool CIniFile::LoadHexVal(const std::string& section, const std::string& key, int32_t& out) const {
    return LoadNumber(section, key, true, out);
}

bool CIniFile::LoadBoolVal(const std::string& section, const std::string& key,
                           const std::string& trueWord, const std::string& falseWord,
                           bool defaultValue, bool& out) const {
    const std::string value = GetValue(section, key);
    if (value.empty()) {
        out = defaultValue;
        return true;
    }
    if (value == trueWord) {
        out = true;
        return true;
    }
    if (value == falseWord) {
        out = false;
        return true;
    }
    TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "The value: %s is neither %s nor %s", value.c_str(),
                     trueWord.c_str(), falseWord.c_str());
    return false;
}

}  // namespace TesselFX
