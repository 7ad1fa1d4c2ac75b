#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "protocol/MessageData.h"

namespace TesselFX {
namespace zbctl {

/// Which side of the tuning protocol a frame comes from. Some ids are shared by a request and
/// its answer; the direction decides which class reads the frame.
enum class MessageDirection {
    kAny,      ///< the answer class is tried first, then the request
    kRequest,  ///< a command to the library
    kAnswer,   ///< a reply or a notification from the library
};

/// The tuning messages that zbctl writes and reads, by their short name (the class name less
/// "MessageData"), with one text form of their fields for reading and printing: the fields
/// that Print gives are the words that Encode takes. Stateless; safe from any thread.
class MessageCatalog {
  public:
    /// Builds the frame (id and payload) of message name from its field words. Throws
    /// ZbctlError with the message's usage when the name or a field is wrong.
    static std::vector<char> Encode(const std::string& name,
                                    const std::vector<std::string>& fields);

    /// "Name fields..." of a frame. Throws ZbctlError when no message of the frame's id reads
    /// it.
    static std::string Describe(const std::vector<char>& frame, MessageDirection direction);

    /// The frame carried by a command, reply or notification text, white space around it
    /// left out: base64, or base64 inside the text envelope, whose instance then goes to
    /// instance (left empty otherwise). Throws ZbctlError when the base64 is not valid
    /// (DecodeBase64Text) or the envelope's instance is not a number.
    static std::vector<char> FrameOfText(const std::string& text, std::string& instance);

    /// The bytes of text that is base64 and nothing else: the alphabet, then as many "=" as
    /// fill the last group of four. Throws ZbctlError "not base64: ..." naming what is wrong.
    static std::vector<char> DecodeBase64Text(const std::string& text);

    /// "Name FIELD..." of every message, one per line, for help texts.
    static std::string UsageList();
};

}  // namespace zbctl
}  // namespace TesselFX
