#pragma once

#include <functional>
#include <string>
#include <vector>

namespace TesselFX {
namespace zbctl {

/// The whole content of a file (a regular file, or anything that reads to an end such as a
/// pipe). Throws ZbctlError "cannot read WHAT PATH: CAUSE", the cause being the system's text
/// ("Is a directory", "No such file or directory").
std::vector<char> ReadFileBytes(const std::string& path, const std::string& what);
/// The same content as text.
std::string ReadText(const std::string& path, const std::string& what);

/// Throws UsageError when output is the same file as one of inputs: compared by device and
/// inode, so that another spelling of the path, a symbolic or a hard link is caught too.
/// Empty paths and paths that do not exist are passed over.
void RefuseOutputOverInputs(const std::string& output, const std::vector<std::string>& inputs);

/// Writes a file whole or not at all: content() gets the descriptor of a new temporary file in
/// the target's folder, which is synced and renamed over the target only once content() returned,
/// so that a failure leaves the previous file as it was (the temporary file is removed). A
/// replaced file keeps its permissions; a new one gets those that the umask allows. A symbolic
/// link is followed; a target that exists and is not a regular file (a device, a pipe) is
/// written in place. Throws ZbctlError "cannot write TARGET: CAUSE"; content() throws the same
/// way when it fails (WriteAll does).
void WriteFileWhole(const std::string& target, const std::function<void(int fd)>& content);
void WriteFileWhole(const std::string& target, const std::vector<char>& bytes);

/// Writes all size bytes to fd. Throws ZbctlError "cannot write TARGET: CAUSE".
void WriteAll(int fd, const char* data, size_t size, const std::string& target);

/// "cannot write TARGET: " and the text of errno.
std::string WriteFailure(const std::string& target);

}  // namespace zbctl
}  // namespace TesselFX
