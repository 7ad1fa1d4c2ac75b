#include "config/StringUtils.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "log/TesselLog.h"

namespace TesselFX {

namespace {

bool IsWhiteSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

/// Matches one literal character of a scan format; moves the cursor on success.
bool ScanLiteral(const char*& cursor, char literal) {
    if (*cursor != literal) return false;
    ++cursor;
    return true;
}

/// A "%c" conversion: any one character but the terminating NUL.
bool ScanChar(const char*& cursor, char& out) {
    if (*cursor == '\0') return false;
    out = *cursor++;
    return true;
}

}  // namespace

std::vector<std::string> Split(const std::string& text, char delimiter) {
    std::vector<std::string> tokens;
    std::istringstream stream(text);
    std::string token;
    while (std::getline(stream, token, delimiter)) tokens.push_back(token);
    return tokens;
}

std::string RemoveWhiteSpace(const std::string& text) {
    std::string result;
    result.reserve(text.size());
    for (char c : text) {
        if (!IsWhiteSpace(c)) result.push_back(c);
    }
    return result;
}

bool ScanInt(const char*& cursor, int32_t& out) {
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(cursor, &end, 10);
    if (end == cursor) return false;
    out = static_cast<int32_t>(static_cast<uint32_t>(static_cast<unsigned long>(value)));
    cursor = end;
    return true;
}

bool ScanUint(const char*& cursor, int base, uint32_t& out) {
    char* end = nullptr;
    errno = 0;
    const unsigned long value = std::strtoul(cursor, &end, base);
    if (end == cursor) return false;
    out = static_cast<uint32_t>(value);
    cursor = end;
    return true;
}

bool ScanDouble(const char*& cursor, double& out) {
    char* end = nullptr;
    errno = 0;
    const double value = std::strtod(cursor, &end);
    if (end == cursor) return false;
    out = value;
    cursor = end;
    return true;
}

const char* ToIntPair(const char* text, int32_t& first, int32_t& second) {
    const char* bracket = text == nullptr ? nullptr : std::strchr(text, '[');
    if (bracket == nullptr) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ToIntPair: wrong format, missing '['\n");
        return nullptr;
    }
    TESSEL_LOG(1, TESSEL_LOG_FXModule, "ToIntPair %s\n ", bracket);
    const char* cursor = bracket;
    char open = 0;
    char close = 0;
    const bool ok = ScanChar(cursor, open) && ScanInt(cursor, first) && ScanLiteral(cursor, ':') &&
                    ScanInt(cursor, second) && ScanChar(cursor, close);
    if (!ok || open != '[' || close != ']') {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ToIntPair: wrong format\n");
        return nullptr;
    }
    return cursor;
}

const char* ToIntTriple(const char* text, int32_t& first, int32_t& second, int32_t& third) {
    third = 0;
    const char* bracket = text == nullptr ? nullptr : std::strchr(text, '[');
    if (bracket == nullptr) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ToIntTriple: wrong format, missing '['\n");
        return nullptr;
    }
    const char* cursor = bracket;
    char open = 0;
    char close = 0;
    const bool ok = ScanChar(cursor, open) && ScanInt(cursor, first) && ScanLiteral(cursor, ':') &&
                    ScanInt(cursor, second) && ScanLiteral(cursor, ':') && ScanInt(cursor, third) &&
                    ScanChar(cursor, close);
    if (!ok || open != '[' || close != ']') {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ToIntTriple: wrong format\n");
        return nullptr;
    }
    return cursor;
}

const char* ToParametersArray(const char* text, std::vector<int32_t>& ids,
                              std::vector<double>& values) {
    const char* bracket = text == nullptr ? nullptr : std::strchr(text, '[');
    if (bracket == nullptr) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ToParametersArray: wrong format, missing '['\n");
        return nullptr;
    }
    const char* cursor = bracket + 1;
    for (;;) {
        int32_t id = 0;
        double value = 0.0;
        if (!(ScanInt(cursor, id) && ScanLiteral(cursor, ':') && ScanDouble(cursor, value))) {
            break;
        }
        TESSEL_LOG(1, TESSEL_LOG_FXModule, "%d:%f", id, value);
        ids.push_back(id);
        values.push_back(value);
        if (*cursor == ',') {
            ++cursor;
        } else if (*cursor == ']') {
            return cursor + 1;
        } else {
            break;
        }
    }
    TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "ToParametersArray: wrong format\n");
    return nullptr;
}

const char* ToTagAndParameters(const char* text, int32_t& first, int32_t& second,
                               std::vector<int32_t>& ids, std::vector<double>& values) {
    const char* rest = ToIntPair(text, first, second);
    if (rest == nullptr) return nullptr;
    return ToParametersArray(rest, ids, values);
}

const char* FromTag(const char* text, int32_t& a, int32_t& b, uint32_t& c, uint32_t& d) {
    const char* bracket = text == nullptr ? nullptr : std::strchr(text, '[');
    if (bracket == nullptr) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "FromTag: wrong format, missing '['\n");
        return nullptr;
    }
    const char* cursor = bracket;
    const bool ok = ScanLiteral(cursor, '[') && ScanInt(cursor, a) && ScanLiteral(cursor, ':') &&
                    ScanInt(cursor, b) && ScanLiteral(cursor, ']') && ScanLiteral(cursor, '[') &&
                    ScanLiteral(cursor, '0') && ScanLiteral(cursor, 'x') &&
                    ScanUint(cursor, 16, c) && ScanLiteral(cursor, ',') &&
                    ScanLiteral(cursor, '0') && ScanLiteral(cursor, 'x') &&
                    ScanUint(cursor, 16, d) && ScanLiteral(cursor, ']');
    if (!ok) {
        TESSEL_LOG_ERROR(TESSEL_LOG_FXModule, "FromTag: wrong format\n");
        return nullptr;
    }
    return cursor;
}

}  // namespace TesselFX

namespace TesselFX {

std::pair<std::string, std::string> CutAtFirst(const std::string& text, char delimiter) {
    const size_t at = text.find(delimiter);
    if (at == std::string::npos) return {text, std::string()};
    return {text.substr(0, at), text.substr(at + 1)};
}

uint32_t ToUint32(const std::string& text) { return static_cast<uint32_t>(std::stoul(text)); }

uint32_t ToSubtypeMask(const std::string& text) {
    uint32_t mask = 0;
    for (const std::string& token : Split(text, '|')) mask |= 1u << (ToUint32(token) & 31u);
    return mask;
}

}  // namespace TesselFX
