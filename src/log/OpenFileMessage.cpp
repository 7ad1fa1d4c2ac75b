#include "log/OpenFileMessage.h"

namespace TesselFX {

OpenFileMessage::OpenFileMessage(std::shared_ptr<FileWriter> writer, std::string path,
                                 std::string mode)
    : m_writer(std::move(writer)), m_path(std::move(path)), m_mode(std::move(mode)) {}

void OpenFileMessage::Execute() {
    if (m_writer) m_writer->Open(m_path, m_mode);
}

}  // namespace TesselFX
