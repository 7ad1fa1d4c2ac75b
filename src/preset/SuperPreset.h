#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "preset/IPreset.h"
#include "preset/IPresetChangeListener.h"
#include "preset/LinkLawEntry.h"

namespace TesselFX {

/// A user preset that lies over whatever mode pair is current: one per control handler,
/// shared by all its handles, so that a setting there survives a mode change. A link-law
/// chunk set here replaces every link law below it. Every change is told to the listeners,
/// synchronously. No locks: the caller's lock covers every call.
class SuperPreset {
  public:
    explicit SuperPreset(uint32_t outputMode = 0, uint32_t soundMode = 0);
    virtual ~SuperPreset();

    virtual void SetParameter(unsigned int id, double value);
    virtual void SetParameterArray(const std::vector<unsigned int>& ids,
                                   const std::vector<double>& values);
    virtual void SetParameterArray(const std::map<unsigned int, double>& parameters);
    virtual bool GetParameter(unsigned int id, double& value) const;
    virtual bool GetParameterArray(const std::vector<unsigned int>& ids,
                                   std::vector<double>& values) const;
    virtual bool GetAllParameters(std::vector<unsigned int>& ids,
                                  std::vector<double>& values) const;
    virtual std::map<unsigned int, double> GetAllParameters() const;
    virtual bool HasParameter(unsigned int id) const;
    virtual void ClearParameter(unsigned int id);
    virtual void ClearParameterArray(const std::vector<unsigned int>& ids);
    virtual void ClearAllParameters();
    virtual void SetChunk(unsigned int index, const std::vector<char>& data);
    virtual bool GetChunk(unsigned int index, std::vector<char>& data) const;
    virtual std::vector<unsigned int> GetChunkIndices() const;
    virtual uint32_t GetChunkCount() const;
    virtual std::map<unsigned int, std::vector<char>> GetAllChunks() const;
    virtual void ClearChunk(unsigned int index);
    virtual void ClearAllChunks();
    virtual void ClearAll();
    virtual uint32_t GetParameterCount() const;
    virtual bool IsEmpty() const;
    virtual void Dump() const;
    virtual const IPreset* AsConst() const;
    virtual std::vector<LinkLawEntry> GetLinkLawEntries() const;
    /// Listeners are kept by shared pointer, each once, ordered by pointer value.
    virtual void AddListener(const std::shared_ptr<IPresetChangeListener>& listener);
    virtual void RemoveListener(const std::shared_ptr<IPresetChangeListener>& listener);

  private:
    template <typename Notification>
    void Notify(Notification notification);

    std::shared_ptr<IPreset> m_preset;
    std::set<std::shared_ptr<IPresetChangeListener>> m_listeners;
};

}  // namespace TesselFX
