#pragma once

#include <cstddef>
#include <vector>

namespace TesselFX {

/// Which parameters of a list may have changed since the last Take: all of them, or the ids
/// recorded (in no order, possibly repeated). It starts at all. No locks.
class ParameterChangeRecord {
  public:
    /// Records that id may have changed. A record that nobody took for long (more ids than
    /// the size of the list and 64 besides) gives up and counts everything as changed.
    void Record(unsigned int id, size_t listSize);
    /// Records that any parameter may have changed.
    void RecordAll();
    /// Moves the ids recorded into ids and starts anew; false, with ids empty, when any
    /// parameter may have changed.
    bool Take(std::vector<unsigned int>& ids);

  private:
    bool m_all = true;
    std::vector<unsigned int> m_ids;
};

}  // namespace TesselFX
