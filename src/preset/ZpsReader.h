#pragma once

#include <string>

#include "preset/ZpsBufferReader.h"

namespace TesselFX {

/// Loads the system preset file and the optional user preset file from disk and parses
/// them. An empty or zero-sized user file is fine; a system file is required.
class ZpsReader : public ZpsBufferReader {
  public:
    ZpsReader(const std::string& systemPath, const std::string& userPath,
              const std::shared_ptr<IPresetFactory>& presetFactory,
              const std::shared_ptr<IPresetSetFactory>& presetSetFactory,
              const std::shared_ptr<IPresetHandleFactory>& presetHandleFactory);
    ZpsReader(const char* systemPath, const char* userPath,
              const std::shared_ptr<IPresetFactory>& presetFactory,
              const std::shared_ptr<IPresetSetFactory>& presetSetFactory,
              const std::shared_ptr<IPresetHandleFactory>& presetHandleFactory);

    std::shared_ptr<IPresetSet> Read() override;
    bool Read(const std::shared_ptr<IPresetSet>& presetSet) override;
    virtual void SetZps(const std::string& systemPath, const std::string& userPath);

    bool LoadFile(const std::string& path, bool isUser);

  private:
    std::string m_systemPath;
    std::string m_userPath;
};

}  // namespace TesselFX
