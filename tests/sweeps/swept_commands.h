// What the sweeps type: every command of both modes with valid arguments.
#pragma once

#include <string>
#include <vector>

struct SweptCommand {
  std::string setup;  // lines that are typed before, one behind the other
  std::string line;   // of configuration mode, what is typed behind `configure`
  int mode;           // libcli's
};

// The order is that of the list, so that a report names the same command in every run.
const std::vector<SweptCommand>& sweptCommands();

// Writes the files that the commands read into the current folder.
void writeSweptFiles();

// Commands of the vocabulary that the list does not type, one a line.
std::string missingCommands();
