#pragma once

#include "protocol/ChunkMessageData.h"

namespace TesselFX {

/// Id 5: sets a chunk.
class SetChunkMessageData : public ChunkMessageData {
  public:
    static constexpr uint32_t kId = 5;
    using ChunkMessageData::ChunkMessageData;
    uint32_t GetId() const override { return kId; }
};

/// Id 6: a chunk, answering GetChunkMessageData of the same id.
class ReplyChunkMessageData : public ChunkMessageData {
  public:
    static constexpr uint32_t kId = 6;
    using ChunkMessageData::ChunkMessageData;
    uint32_t GetId() const override { return kId; }
};

}  // namespace TesselFX
