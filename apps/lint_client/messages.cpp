// SPDX-License-Identifier: Apache-2.0

#include "lint_client/messages.h"

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string_view>
#include <utility>

namespace lint_client {
namespace {

bool startsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

// Reads digits and a colon that stand at *at.
std::optional<int> numberAt(std::string_view text, std::size_t* at) {
  constexpr std::size_t kMostDigits = 9;
  const std::size_t start = *at;
  std::size_t end = start;
  while (end < text.size() && isDigit(text[end])) {
    ++end;
  }
  if (end == start || end - start > kMostDigits || end == text.size() || text[end] != ':') {
    return std::nullopt;
  }
  *at = end + 1;
  return std::stoi(std::string(text.substr(start, end - start)));
}

// Takes "file:line:column: " off the beginning of a text. A file's name may have
// colons and blanks in it.
std::optional<Place> takePlace(std::string_view* text) {
  for (std::size_t colon = text->find(':'); colon != std::string_view::npos;
       colon = text->find(':', colon + 1)) {
    std::size_t at = colon + 1;
    const auto line = numberAt(*text, &at);
    const auto column = line ? numberAt(*text, &at) : std::nullopt;
    if (colon != 0 && column && at < text->size() && (*text)[at] == ' ') {
      const Place place{std::string(text->substr(0, colon)), *line, *column};
      *text = text->substr(at + 1);
      return place;
    }
  }
  return std::nullopt;
}

// "%Warning-WIDTH: ", "%Error: " and the like.
struct Header {
  bool isError;
  bool isInformation;
  std::string code;
  std::string_view rest;
};

std::optional<Header> headerOf(std::string_view line) {
  const std::size_t colon = line.find(": ");
  if (colon == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string_view name = line.substr(0, colon);
  const std::size_t dash = name.find('-', 1);
  const std::string_view kind = name.substr(0, dash);
  if (kind != "%Warning" && kind != "%Error" && name != "-Info") {
    return std::nullopt;
  }
  const auto code = dash == std::string_view::npos ? std::string_view() : name.substr(dash + 1);
  return Header{kind == "%Error", name == "-Info", std::string(code), line.substr(colon + 2)};
}

// "   12 |   assign y = a;" and "      |          ^~~~~~"
bool isExcerpt(std::string_view line) {
  const std::string_view text = trimmed(line);
  const std::size_t bar = text.find_first_not_of("0123456789");
  return startsWith(line, " ") && bar != std::string_view::npos &&
         startsWith(text.substr(bar), bar == 0 ? "|" : " |");
}

bool isTotal(const Header& header) {
  return header.isError && header.code.empty() &&
         (startsWith(header.rest, "Exiting due to ") || startsWith(header.rest, "Command Failed "));
}

bool isAboutTheManual(std::string_view note) {
  return startsWith(note, "For ") || startsWith(note, "Use \"/* verilator") ||
         startsWith(note, "See the manual") || startsWith(note, "Looked in:");
}

Message messageOf(const Header& header) {
  Message message;
  message.isError = header.isError;
  message.code = header.code;
  std::string_view text = header.rest;
  if (!startsWith(text, "Internal Error")) {
    message.place = takePlace(&text);
  }
  message.text = text;
  return message;
}

// An indented line: ": ... text", "file:line:column: ... text" or "... text". Any
// other without a place is of use to the user of a terminal only.
void addNote(std::string_view line, Message* message) {
  std::string_view text = trimmed(line);
  if (startsWith(text, ": ")) {
    text = trimmed(text.substr(2));
  }
  Note note;
  note.place = takePlace(&text);
  text = trimmed(text);
  const bool isMarked = startsWith(text, "... ");
  text = isMarked ? text.substr(4) : text;
  if (isMarked && startsWith(text, "In instance ")) {
    message->instance = text.substr(12);
  } else if (note.place || (isMarked && !isAboutTheManual(text))) {
    note.text = text;
    message->notes.push_back(std::move(note));
  }
}

// Verilator gives this advice the form of an error.
bool isAdvice(const Message& message) {
  return message.isError && message.code.empty() &&
         startsWith(message.text, "This may be because ");
}

class Reader {
 public:
  void read(const std::string& line) {
    const auto header = headerOf(line);
    if (header) {
      begin(*header);
    } else if (current_ != nullptr && startsWith(line, " ")) {
      if (!isExcerpt(line)) {
        addNote(line, current_);
      }
    } else if (current_ != nullptr) {
      current_->text += '\n' + line;
    }
  }

  std::vector<Message> take() { return std::move(messages_); }

 private:
  void begin(const Header& header) {
    if (isTotal(header) || header.isInformation) {
      current_ = header.isInformation ? &ignored_ : nullptr;
      return;
    }
    Message message = messageOf(header);
    if (isAdvice(message) && !messages_.empty()) {
      messages_.back().notes.push_back({std::nullopt, message.text});
      return;
    }
    messages_.push_back(std::move(message));
    current_ = &messages_.back();
  }

  std::vector<Message> messages_;
  Message ignored_;
  Message* current_ = nullptr;
};

}  // namespace

std::vector<Message> parseMessages(const std::string& output) {
  Reader reader;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    reader.read(line);
  }
  return reader.take();
}

bool hasErrors(const std::vector<Message>& messages) {
  return std::any_of(messages.begin(), messages.end(),
                     [](const Message& message) { return message.isError; });
}

const Message* blockingError(const std::vector<Message>& messages) {
  const Message* first = nullptr;
  bool isParsed = true;
  bool hasLocated = false;
  for (const Message& message : messages) {
    if (!message.isError) {
      continue;
    }
    first = first == nullptr ? &message : first;
    hasLocated = hasLocated || message.place;
    isParsed = isParsed && !(message.code.empty() && startsWith(message.text, "syntax error"));
  }
  return isParsed && hasLocated ? nullptr : first;
}

std::string lineFor(const Message& message) {
  std::string text = message.text.substr(0, message.text.find('\n'));
  if (!message.place) {
    return text;
  }
  const Place& place = *message.place;
  return place.file + ':' + std::to_string(place.line) + ':' + std::to_string(place.column) + ": " +
         text;
}

}  // namespace lint_client
