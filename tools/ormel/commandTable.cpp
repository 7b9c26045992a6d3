#include "ormel/command.h"

std::vector<std::unique_ptr<Command>> MakeCommands() {
  std::vector<std::unique_ptr<Command>> commands;
  commands.push_back(MakeInfoCommand());
  commands.push_back(MakeCheckCommand());
  commands.push_back(MakeConvertCommand());
  commands.push_back(MakeQueryCommand());
  commands.push_back(MakeEvalCommand());
  commands.push_back(MakeSolveCommand());
  return commands;
}
