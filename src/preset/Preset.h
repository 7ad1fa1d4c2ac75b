#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "preset/CLinkLawEntrySerializer.h"
#include "preset/IPreset.h"
#include "preset/ParameterMaps.h"

namespace TesselFX {

/// A system preset: identity fields fixed at construction, parameters, chunks and the
/// decoded link-law entries of chunk ZBAC_LINKLAWS. No locks.
class Preset : public IPreset {
  public:
    Preset(uint32_t outputMode, uint32_t soundMode, uint32_t subtypeMask, const std::string& name,
           const std::string& remarks, uint16_t flags, uint8_t priority,
           const std::shared_ptr<CLinkLawEntrySerializer>& linkLawSerializer);
    ~Preset() override = default;

    void SetParameter(unsigned int id, double value) override;
    void SetParameterArray(const std::vector<unsigned int>& ids,
                           const std::vector<double>& values) override;
    void SetParameterArray(const std::map<unsigned int, double>& parameters) override;
    bool GetParameter(unsigned int id, double& value) const override;
    bool GetParameterArray(const std::vector<unsigned int>& ids,
                           std::vector<double>& values) const override;
    bool GetAllParameters(std::vector<unsigned int>& ids,
                          std::vector<double>& values) const override;
    std::map<unsigned int, double> GetAllParameters() const override;
    bool HasParameter(unsigned int id) const override;
    void ClearParameter(unsigned int id) override;
    void ClearParameterArray(const std::vector<unsigned int>& ids) override;
    void ClearAllParameters() override;
    void SetChunk(unsigned int index, const std::vector<char>& data) override;
    bool GetChunk(unsigned int index, std::vector<char>& data) const override;
    std::map<unsigned int, std::vector<char>> GetAllChunks() const override;
    std::vector<unsigned int> GetChunkIndices() const override;
    uint32_t GetChunkCount() const override;
    void ClearChunk(unsigned int index) override;
    void ClearAllChunks() override;
    void ClearAll() override;
    bool IsDefaultSoundMode() const override;
    std::string GetName() const override;
    std::string GetRemarks() const override;
    uint32_t GetOutputMode() const override;
    uint32_t GetSoundMode() const override;
    uint32_t GetSubtypeMask() const override;
    uint8_t GetPriority() const override;
    uint16_t GetFlags() const override;
    uint32_t GetParameterCount() const override;
    bool IsEmpty() const override;
    void Dump() const override;
    const IPreset* AsConst() const override;
    IPreset* AsMutable() override;
    std::shared_ptr<IPreset> Clone() const override;
    std::vector<LinkLawEntry> GetLinkLawEntries() const override;
    void DumpLinkLaws() const override;
    /// The parameters in flat storage, without a copy.
    const ParameterList& GetParameterList() const { return m_parameters; }

  protected:
    /// Copies parameters and, through the virtual SetChunk, the chunks into a new preset.
    void CopyContentTo(IPreset& clone) const;

    const uint32_t m_outputMode;
    const uint32_t m_soundMode;
    const uint32_t m_subtypeMask;
    const std::string m_name;
    const std::string m_remarks;
    const uint16_t m_flags;
    const uint8_t m_priority;
    std::shared_ptr<CLinkLawEntrySerializer> m_linkLawSerializer;
    ParameterList m_parameters;
    std::map<unsigned int, std::vector<char>> m_chunks;
    std::vector<LinkLawEntry> m_linkLawEntries;
};

}  // namespace TesselFX
