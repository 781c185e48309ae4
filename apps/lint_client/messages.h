// SPDX-License-Identifier: Apache-2.0

// What Verilator says about a design, taken apart.

#ifndef VOK_APPS_LINT_CLIENT_MESSAGES_H_
#define VOK_APPS_LINT_CLIENT_MESSAGES_H_

#include <optional>
#include <string>
#include <vector>

namespace lint_client {

struct Place {
  std::string file;
  int line = 0;
  int column = 0;
};

// What Verilator adds to a message: another place, advice, the message's reason.
struct Note {
  std::optional<Place> place;
  std::string text;
};

struct Message {
  bool isError = false;
  // The warning's name, such as "WIDTH"; empty for errors without one.
  std::string code;
  std::optional<Place> place;
  // More than one line if the design itself wrote the text.
  std::string text;
  std::vector<Note> notes;
  // The instance of a module in which the message arose, such as "top.u_tx".
  std::string instance;
};

// Takes the standard error output of Verilator apart. Left out are excerpts of
// sources, the totals, pointers to the manual, what $info prints, and lines that
// belong to no message.
std::vector<Message> parseMessages(const std::string& output);

bool hasErrors(const std::vector<Message>& messages);

// The first error, if the messages mean that the files could not be checked at
// all: because of a syntax error, or because of an error that is not in the files.
const Message* blockingError(const std::vector<Message>& messages);

// "file:line:column: text", or the text alone if there is no place.
std::string lineFor(const Message& message);

}  // namespace lint_client

#endif  // VOK_APPS_LINT_CLIENT_MESSAGES_H_
