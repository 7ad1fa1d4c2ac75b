#include "config/ZorbAudioSettings.h"

namespace TesselFX {

ZorbAudioSettings::ZorbAudioSettings()
    : m_common(new CommonSettings()), m_settings{kVersion, m_common.get()} {}

ZorbAudioSettings::~ZorbAudioSettings() = default;

bool ZorbAudioSettings::AddInt(const std::string& key, int32_t value) {
    return m_common->AddInt(key, value);
}

bool ZorbAudioSettings::AddUint(const std::string& key, uint32_t value) {
    return m_common->AddUint(key, value);
}

bool ZorbAudioSettings::AddDouble(const std::string& key, double value) {
    return m_common->AddDouble(key, value);
}

bool ZorbAudioSettings::AddString(const std::string& key, const std::string& value) {
    return m_common->AddString(key, value);
}

bool ZorbAudioSettings::GetInt(const std::string& key, int32_t& out) const {
    return m_common->GetInt(key, out);
}

bool ZorbAudioSettings::GetUint(const std::string& key, uint32_t& out) const {
    return m_common->GetUint(key, out);
}

bool ZorbAudioSettings::GetDouble(const std::string& key, double& out) const {
    return m_common->GetDouble(key, out);
}

uint32_t ZorbAudioSettings::GetString(const std::string& key, char* buffer, uint32_t size) const {
    return m_common->GetString(key, buffer, size);
}

bool ZorbAudioSettings::Remove(const std::string& key) { return m_common->Remove(key); }

bool ZorbAudioSettings::Clear() { return m_common->Clear(); }

bool ZorbAudioSettings::Contains(const std::string& key) const { return m_common->Contains(key); }

const char* const* ZorbAudioSettings::GetKeys(uint32_t& count) { return m_common->GetKeys(count); }

bool ZorbAudioSettings::CopyTo(CommonSettings* other) const { return m_common->CopyTo(other); }

const std::string& ZorbAudioSettings::ToString() { return m_common->ToString(); }

bool ZorbAudioSettings::Matches(const CommonSettings* other) const {
    return m_common->Matches(other);
}

}  // namespace TesselFX
