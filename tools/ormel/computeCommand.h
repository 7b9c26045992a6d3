#pragma once

#include <string>
#include <vector>

#include "ormel/command.h"

class KVN_network;
struct EvidenceInput;

/// A command that computes something from a network file and from what is known: FILE, --evidence,
/// and the refusal of a file whose numbers would be wrong without a sign of it.
class ComputeCommand : public Command {
 public:
  int Run(const CommonOptions& options, Output& output) override;

 protected:
  /// Declares FILE and --evidence, which `whatIsEvidence` describes.
  void DeclareCase(CLI::App& app, const char* whatIsEvidence);
  /// "queried": what a file with errors is not.
  virtual const char* Done() const = 0;
  /// All that the command line tells of evidence; here the findings.
  virtual int CollectEvidence(EvidenceInput& input, Output& output) const;
  virtual int Answer(KVN_network& network, const EvidenceInput& input, const CommonOptions& options,
                     Output& output) const = 0;

  std::string file;
  std::vector<std::string> findings;
};
