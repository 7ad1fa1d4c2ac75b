#pragma once

#include <memory>
#include <string>

#include "log/FileWriter.h"
#include "log/Message.h"

namespace TesselFX {

/// Opens the writer's file on the queue thread.
class OpenFileMessage : public TesselInterprocess::Message {
  public:
    OpenFileMessage(std::shared_ptr<FileWriter> writer, std::string path, std::string mode);
    void Execute() override;

  private:
    std::shared_ptr<FileWriter> m_writer;
    std::string m_path;
    std::string m_mode;
};

}  // namespace TesselFX
