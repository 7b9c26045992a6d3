#include "ormel/computeCommand.h"

#include <CLI/CLI.hpp>

#include "network/network.h"
#include "ormel/commandTools.h"
#include "ormel/evidenceInput.h"
#include "ormel/exitCodes.h"
#include "ormel/output.h"
#include "ormel/text.h"

void ComputeCommand::DeclareCase(CLI::App& app, const char* whatIsEvidence) {
  app.add_option("FILE", file, "Network file")->required();
  app.add_option("-e,--evidence", findings, whatIsEvidence)
      ->type_name("NODE=STATE")
      ->allow_extra_args(false);
}

int ComputeCommand::CollectEvidence(EvidenceInput& input, Output& output) const {
  for (const std::string& text : findings) {
    if (int code = ParseFinding(text, input, output); code != kExitDone) return code;
  }
  return kExitDone;
}

int ComputeCommand::Run(const CommonOptions& options, Output& output) {
  if (!options.to.empty()) {
    output.Say(Severity::kError,
               std::string(Name()) + " writes no network: --to has no meaning here");
    return kExitBadUsage;
  }
  EvidenceInput input;
  if (int code = CollectEvidence(input, output); code != kExitDone) return code;
  NetworkFile read;
  if (int code = OpenToRead(file, options, read, output); code != kExitDone) return code;
  if (read.HasLostContent()) {
    // Numbers of a half-read network would be wrong without a sign of it.
    output.Say(Severity::kError,
               ToPrintable(file.c_str()) + ": not " + Done() + ": the file has errors");
    return kExitBadFile;
  }
  return Answer(*read.network, input, options, output);
}
