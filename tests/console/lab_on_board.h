// A lab in front of a board of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "console/programs.h"
#include "support/temporary_folder.h"

class LabOnBoard : public testing::Test {
 protected:
  // Starts the lab with this board file, in a folder of the test's own, and opens a session.
  void start(const std::string& board) {
    const std::vector<std::string> command{gfastLab(), "--board", folder_.write("board.toml", board),
                                           "--port", "0"};
    session_.reset();
    program_ = std::make_unique<ConsoleProgram>(LAUNCHER, command, folder_.path());
    session_ = std::make_unique<OpenSession>(program_->port());
  }

  // What the session prints for a line.
  std::string typed(const std::string& line) { return session_->type(line); }

  const TemporaryFolder& folder() const { return folder_; }
  ConsoleProgram& program() { return *program_; }
  OpenSession& session() { return *session_; }

 private:
  TemporaryFolder folder_;
  std::unique_ptr<ConsoleProgram> program_;
  std::unique_ptr<OpenSession> session_;
};
