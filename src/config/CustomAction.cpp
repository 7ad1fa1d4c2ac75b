#include "config/CustomAction.h"

#include <string>

#include "log/TesselLog.h"

namespace TesselFX {

CustomAction::PresetConfig::PresetConfig(const std::vector<std::vector<int32_t>>& allowed,
                                         uint32_t outputMode, uint32_t soundMode)
    : m_allowed(allowed), m_outputMode(outputMode), m_soundMode(soundMode) {}

bool CustomAction::PresetConfig::Matches(const std::vector<int32_t>& numbers) const {
    if (m_allowed.size() > numbers.size()) return false;
    for (size_t i = 0; i < m_allowed.size(); ++i) {
        bool found = false;
        for (int32_t allowed : m_allowed[i]) {
            if (allowed == numbers[i]) {
                found = true;
                break;
            }
        }
        if (!found) return false;
    }
    return true;
}

void CustomAction::PresetConfig::FillAction(InternalAction& out) const {
    TESSEL_LOG(0, TESSEL_LOG_FXModule, "%s id %d om %d sm %d", "FillAction",
               InternalAction::kPresetSelection, static_cast<int>(m_outputMode),
               static_cast<int>(m_soundMode));
    out.id = InternalAction::kPresetSelection;
    out.outputMode = m_outputMode;
    out.soundMode = m_soundMode;
}

CustomAction::CustomAction(int32_t id) : m_id(id) {}

CustomAction::~CustomAction() = default;

void CustomAction::AddRule(uint32_t priority, const std::vector<std::vector<int32_t>>& allowed,
                           uint32_t outputMode, uint32_t soundMode) {
    TESSEL_LOG(0, TESSEL_LOG_FXModule, "%s id %d priority %d om %d sm %d", "AddRule", m_id,
               static_cast<int>(priority), static_cast<int>(outputMode),
               static_cast<int>(soundMode));
    m_rules[priority] = std::make_shared<PresetConfig>(allowed, outputMode, soundMode);
}

InternalAction CustomAction::GetAction(const std::vector<int32_t>& numbers) const {
    if (TESSEL_LOG_ON(0, TESSEL_LOG_FXModule)) {
        std::string joined;
        for (size_t i = 0; i < numbers.size(); ++i) {
            if (i > 0) joined += " ";
            joined += std::to_string(numbers[i]);
        }
        TESSEL_LOG(0, TESSEL_LOG_FXModule, "%s %s", "GetAction", joined.c_str());
    }
    InternalAction action;
    for (const auto& rule : m_rules) {
        if (rule.second->Matches(numbers)) {
            rule.second->FillAction(action);
            return action;
        }
    }
    TESSEL_LOG(3, TESSEL_LOG_FXModule, "Could not find matched action");
    return action;
}

}  // namespace TesselFX
