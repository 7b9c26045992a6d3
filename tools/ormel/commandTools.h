#pragma once

#include <string>
#include <vector>

#include "ormel/losses.h"
#include "ormel/networkFile.h"

struct CommonOptions;

/// What the commands share: the format of a file, and messages about files.

/// The format of a file by its option or else its extension, in `format`. kExitDone, or
/// kExitRefused after the engine's refusal was told together with the formats that there are;
/// `option` is the one that would help ("--from").
int ChooseFormat(const std::string& fileName, const std::string& formatName, const char* option,
                 int& format, Output& output);

/// Reads a file; tells why when the engine gives it up altogether. kExitDone also for a file with
/// errors in it, which `file` has.
int OpenNetwork(const std::string& fileName, int format, Depth depth, NetworkFile& file,
                Output& output);

/// kExitDone for a file without errors, kExitLimit where one of them is that memory ran out or that
/// a table would be too large, else kExitBadFile.
int ExitCodeOfFile(const NetworkFile& file);

/// The same for a command that only reads: in the format that --from names, with what the reader
/// has said told.
int OpenToRead(const std::string& fileName, const CommonOptions& options, NetworkFile& read,
               Output& output);

/// What writing the network that was read from the file would lose, of the file and of the network.
std::vector<Loss> ListLossesOfFile(const NetworkFile& file, int format);

/// Tells that the engine's update failed, in the engine's words; the exit code for `result`.
int TellUpdateFailure(int result, const LogCapture& log, Output& output);

/// "a, b, c", printable.
std::string Joined(const std::vector<std::string>& words);

/// One line "NAME:LINE: WORD: TEXT".
std::string DescribeDiagnostic(const std::string& fileName, const Diagnostic& diagnostic,
                               bool colour);
/// All of them, as messages.
void SayDiagnostics(const NetworkFile& file, Output& output);
