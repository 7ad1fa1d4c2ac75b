#pragma once

#include "protocol/ChunkMessageData.h"
#include "protocol/MessageWithId.h"

namespace TesselFX {

/// Sets a chunk.
using SetChunkMessageData = MessageWithId<ChunkMessageData, 5>;
/// A chunk, answering GetChunkMessageData of the same id.
using ReplyChunkMessageData = MessageWithId<ChunkMessageData, 6>;

}  // namespace TesselFX
