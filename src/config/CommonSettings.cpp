#include "config/CommonSettings.h"

#include <algorithm>
#include <cstring>

namespace TesselFX {

namespace {
constexpr char kWildcard[] = "AUTO";
}  // namespace

CommonSettings::IValue::IValue(std::string text) : m_stringValue(std::move(text)) {}

CommonSettings::IValue::~IValue() = default;

std::string CommonSettings::IValue::GetStringValue() const { return m_stringValue; }

bool CommonSettings::IValue::IsEqual(const IValue& other) const {
    return m_stringValue == other.m_stringValue;
}

CommonSettings::IntValue::IntValue(int32_t value) : IValue(std::to_string(value)), m_value(value) {}

int CommonSettings::IntValue::GetValueType() const { return kIntValue; }

CommonSettings::UintValue::UintValue(uint32_t value)
    : IValue(std::to_string(value)), m_value(value) {}

int CommonSettings::UintValue::GetValueType() const { return kUintValue; }

CommonSettings::DoubleValue::DoubleValue(double value)
    : IValue(std::to_string(value)), m_value(value) {}

int CommonSettings::DoubleValue::GetValueType() const { return kDoubleValue; }

bool CommonSettings::DoubleValue::IsEqualValue(const IValue& other) const {
    if (other.GetValueType() == kDoubleValue) {
        return m_value == static_cast<const DoubleValue&>(other).m_value;
    }
    return IsEqual(other);
}

CommonSettings::StringValue::StringValue(const std::string& value)
    : IValue(value), m_value(value) {}

int CommonSettings::StringValue::GetValueType() const { return kStringValue; }

CommonSettings::CommonSettings() = default;

CommonSettings::~CommonSettings() = default;

bool CommonSettings::Put(const std::string& key, std::shared_ptr<IValue> value) {
    m_values[key] = std::move(value);
    return true;
}

bool CommonSettings::AddInt(const std::string& key, int32_t value) {
    return Put(key, std::make_shared<IntValue>(value));
}

bool CommonSettings::AddUint(const std::string& key, uint32_t value) {
    return Put(key, std::make_shared<UintValue>(value));
}

bool CommonSettings::AddDouble(const std::string& key, double value) {
    return Put(key, std::make_shared<DoubleValue>(value));
}

bool CommonSettings::AddString(const std::string& key, const std::string& value) {
    return Put(key, std::make_shared<StringValue>(value));
}

std::shared_ptr<CommonSettings::IValue> CommonSettings::GetValue(const std::string& key) const {
    auto it = m_values.find(key);
    return it == m_values.end() ? nullptr : it->second;
}

bool CommonSettings::GetInt(const std::string& key, int32_t& out) const {
    auto value = GetValue(key);
    if (!value || value->GetValueType() != kIntValue) return false;
    out = static_cast<const IntValue&>(*value).GetValue();
    return true;
}

bool CommonSettings::GetUint(const std::string& key, uint32_t& out) const {
    auto value = GetValue(key);
    if (!value || value->GetValueType() != kUintValue) return false;
    out = static_cast<const UintValue&>(*value).GetValue();
    return true;
}

bool CommonSettings::GetDouble(const std::string& key, double& out) const {
    auto value = GetValue(key);
    if (!value || value->GetValueType() != kDoubleValue) return false;
    out = static_cast<const DoubleValue&>(*value).GetValue();
    return true;
}

uint32_t CommonSettings::GetString(const std::string& key, char* buffer, uint32_t size) const {
    auto value = GetValue(key);
    if (!value) return static_cast<uint32_t>(-1);
    const std::string text = value->GetStringValue();
    if (buffer != nullptr && size > 0) {
        // Copies like strncpy: the rest of the room is zero-filled, the last byte always is.
        const size_t copied = std::min<size_t>(text.size(), size - 1);
        std::memcpy(buffer, text.data(), copied);
        std::memset(buffer + copied, 0, size - copied);
    }
    return static_cast<uint32_t>(std::min<size_t>(size, text.size()));
}

bool CommonSettings::Remove(const std::string& key) { return m_values.erase(key) > 0; }

bool CommonSettings::Clear() {
    m_values.clear();
    return true;
}

bool CommonSettings::Contains(const std::string& key) const {
    return m_values.find(key) != m_values.end();
}

const char* const* CommonSettings::GetKeys(uint32_t& count) {
    m_keyArray.clear();
    m_keyPointers.clear();
    for (const auto& entry : m_values) {
        const std::string& key = entry.first;
        std::unique_ptr<char[]> copy(new char[key.size() + 1]);
        std::memcpy(copy.get(), key.c_str(), key.size() + 1);
        m_keyPointers.push_back(copy.get());
        m_keyArray.push_back(std::move(copy));
    }
    m_keyCount = static_cast<uint32_t>(m_keyArray.size());
    count = m_keyCount;
    return m_keyPointers.empty() ? nullptr : m_keyPointers.data();
}

bool CommonSettings::CopyTo(CommonSettings* other) const {
    if (other == nullptr) return false;
    if (other == this) return true;
    other->m_values = m_values;
    return true;
}

const std::string& CommonSettings::ToString() {
    m_text.clear();
    for (const auto& entry : m_values) {
        m_text += entry.first;
        m_text += "=";
        m_text += entry.second->GetStringValue();
        m_text += ";";
    }
    return m_text;
}

bool CommonSettings::Matches(const CommonSettings* other) const {
    if (other == nullptr) return false;
    if (m_values.empty() || other->m_values.empty()) return true;
    for (const auto& entry : m_values) {
        auto theirs = other->m_values.find(entry.first);
        if (theirs == other->m_values.end()) continue;
        const std::string mine = entry.second->GetStringValue();
        const std::string their = theirs->second->GetStringValue();
        if (mine == their || mine == kWildcard || their == kWildcard) continue;
        return false;
    }
    return true;
}

}  // namespace TesselFX
