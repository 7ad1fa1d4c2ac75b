#include "log/CloseFileMessage.h"

namespace TesselFX {

void CloseFileMessage::Execute() {
    if (m_writer) m_writer->Close();
}

}  // namespace TesselFX
