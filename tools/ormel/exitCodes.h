#pragma once

/// How the tool ends. Scripts rely on these numbers: none is changed, new ones go at the end.
enum ExitCode : int {
  kExitDone = 0,
  kExitRefused = 1,     // the engine or the system refused; message with the engine's code
  kExitBadUsage = 2,    // bad command line
  kExitBadFile = 3,     // a file with errors, or a loss under --strict
  kExitImpossible = 4,  // impossible or conflicting evidence, or none of the samples agrees with it
  kExitLimit = 5,       // over a limit: a table or a network that memory doesn't hold
  kExitInternal = 70,   // a fault of the tool itself
};

/// The exit code for a failed operation of the engine: its limits and conflicts have codes of
/// their own.
int ExitCodeOfResult(int result);
