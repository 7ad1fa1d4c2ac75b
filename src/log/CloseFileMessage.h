#pragma once

#include <memory>

#include "log/FileWriter.h"
#include "log/Message.h"

namespace TesselFX {

/// Closes the writer's file on the queue thread.
class CloseFileMessage : public TesselInterprocess::Message {
  public:
    explicit CloseFileMessage(std::shared_ptr<FileWriter> writer) : m_writer(std::move(writer)) {}
    void Execute() override;

  private:
    std::shared_ptr<FileWriter> m_writer;
};

}  // namespace TesselFX
