#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "config/CommonSettings.h"

namespace TesselFX {

/// The settings record given with every manager call. version must be 2; settings is the
/// search record and is not owned by this plain struct.
struct zorbaudio_settings_t {
    uint32_t version;
    CommonSettings* settings;
};

/// Owns one zorbaudio_settings_t of version 2 and the CommonSettings behind it, and forwards
/// the record's operations. Not copyable; the record's address stays valid for its lifetime.
class ZorbAudioSettings {
  public:
    static constexpr uint32_t kVersion = 2;

    ZorbAudioSettings();
    virtual ~ZorbAudioSettings();
    ZorbAudioSettings(const ZorbAudioSettings&) = delete;
    ZorbAudioSettings& operator=(const ZorbAudioSettings&) = delete;

    /// The address of the record inside this object.
    zorbaudio_settings_t* GetSettings() { return &m_settings; }
    const zorbaudio_settings_t* GetSettings() const { return &m_settings; }

    bool AddInt(const std::string& key, int32_t value);
    bool AddUint(const std::string& key, uint32_t value);
    bool AddDouble(const std::string& key, double value);
    bool AddString(const std::string& key, const std::string& value);
    bool GetInt(const std::string& key, int32_t& out) const;
    bool GetUint(const std::string& key, uint32_t& out) const;
    bool GetDouble(const std::string& key, double& out) const;
    uint32_t GetString(const std::string& key, char* buffer, uint32_t size) const;
    bool Remove(const std::string& key);
    bool Clear();
    bool Contains(const std::string& key) const;
    const char* const* GetKeys(uint32_t& count);
    bool CopyTo(CommonSettings* other) const;
    const std::string& ToString();
    bool Matches(const CommonSettings* other) const;

  private:
    std::unique_ptr<CommonSettings> m_common;
    zorbaudio_settings_t m_settings;
};

}  // namespace TesselFX
