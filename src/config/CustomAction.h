#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "config/InternalAction.h"

namespace TesselFX {

/// Turns a vector of numbers into a preset selection: rules are tried in ascending priority
/// and the first that matches answers. Filled while the configuration is parsed, read-only after.
class CustomAction {
  public:
    class IConfig {
      public:
        virtual ~IConfig() = default;
        virtual bool Matches(const std::vector<int32_t>& numbers) const = 0;
        virtual void FillAction(InternalAction& out) const = 0;
    };

    /// Matches when each number at position i is one of the allowed numbers of position i;
    /// numbers beyond the positions are not looked at, too few numbers never match.
    class PresetConfig : public IConfig {
      public:
        PresetConfig(const std::vector<std::vector<int32_t>>& allowed, uint32_t outputMode,
                     uint32_t soundMode);
        bool Matches(const std::vector<int32_t>& numbers) const override;
        void FillAction(InternalAction& out) const override;

      private:
        std::vector<std::vector<int32_t>> m_allowed;
        uint32_t m_outputMode;
        uint32_t m_soundMode;
    };

    explicit CustomAction(int32_t id);
    virtual ~CustomAction();

    int32_t GetId() const { return m_id; }
    /// Stores a preset rule under priority, replacing a rule of the same priority.
    void AddRule(uint32_t priority, const std::vector<std::vector<int32_t>>& allowed,
                 uint32_t outputMode, uint32_t soundMode);
    /// The answer of the first matching rule; id 0 when none matches.
    InternalAction GetAction(const std::vector<int32_t>& numbers) const;

  private:
    int32_t m_id;
    std::map<uint32_t, std::shared_ptr<IConfig>> m_rules;
};

}  // namespace TesselFX
