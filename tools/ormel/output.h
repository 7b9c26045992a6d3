#pragma once

#include <iosfwd>
#include <string>

/// How a message is meant, and so its word and colour.
enum class Severity { kError, kWarning, kLoss, kNote };

/// The word that stands in front of a message.
const char* WordOf(Severity severity);

/// Where a run writes: data to one stream, messages to the other.
class Output {
 public:
  Output(std::ostream& dataStream, std::ostream& messageStream)
      : data(dataStream), messages(messageStream) {}

  /// Switched on where the stream is a terminal.
  bool colourData = false;
  bool colourMessages = false;
  /// Leaves out all messages but errors.
  bool quiet = false;

  std::ostream& Data() { return data; }
  std::ostream& Messages() { return messages; }
  /// One line "ormel: WORD: TEXT", the text made printable by the caller.
  void Say(Severity severity, const std::string& text);
  /// A line that says itself where it comes from.
  void SayLine(Severity severity, const std::string& line);
  /// The severity's word, coloured if `colour`.
  static std::string Word(Severity severity, bool colour);

 private:
  std::ostream& data;
  std::ostream& messages;
};
