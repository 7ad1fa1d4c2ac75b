#pragma once

namespace TesselFX {

/// Root of the reply parsers; the control handler down-casts it to IReplyMetersBufferParser
/// and IReplyVersionBufferParser.
class IReplyBufferParser {
  public:
    virtual ~IReplyBufferParser() = default;
};

}  // namespace TesselFX
