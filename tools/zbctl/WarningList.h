#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace TesselFX {
namespace zbctl {

/// The warnings of one command. The first kShownPerKind warnings of each kind are kept as text,
/// the others only counted, so that a file that repeats one fault a million times costs a few
/// lines and no memory. Not thread safe.
class WarningList {
  public:
    static constexpr size_t kShownPerKind = 3;

    /// Counts a warning of this kind and keeps makeText() unless kShownPerKind warnings of the
    /// kind are kept already; makeText is not called then.
    template <typename MakeText>
    void Add(std::string_view kind, MakeText makeText) {
        auto count = m_counts.find(kind);
        if (count == m_counts.end()) count = m_counts.emplace(std::string(kind), 0).first;
        if (++count->second <= kShownPerKind) m_texts.push_back(makeText());
    }
    void Add(std::string_view kind, const std::string& text) {
        Add(kind, [&text] { return text; });
    }

    bool Empty() const { return m_counts.empty(); }
    /// The kept texts in the order they came, then for each kind with more warnings than were
    /// kept: "N more warnings of the kind "KIND"".
    std::vector<std::string> Lines() const;

  private:
    std::map<std::string, size_t, std::less<>> m_counts;
    std::vector<std::string> m_texts;
};

}  // namespace zbctl
}  // namespace TesselFX
