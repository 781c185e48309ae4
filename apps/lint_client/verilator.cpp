// SPDX-License-Identifier: Apache-2.0

#include "lint_client/verilator.h"

#include <filesystem>
#include <optional>
#include <stdexcept>

#include "common/held_signals.h"
#include "lint_client/process.h"
#include "lint_client/workspace.h"

namespace lint_client {
namespace {

// Verilator runs elsewhere, so that a relative path has to be made absolute.
std::string program(const std::string& name) {
  return name.find('/') == std::string::npos ? name : std::filesystem::absolute(name).string();
}

// -Wno-fatal makes the exit status tell errors from warnings.
std::vector<std::string> commandLine(const Job& job, const Workspace& workspace) {
  std::vector<std::string> words = {program(job.verilator), "--lint-only", "-Wall", "-Wno-fatal",
                                    "--no-timing"};
  if (!job.top.empty()) {
    words.insert(words.end(), {"--top-module", job.top});
  }
  for (const std::string& directory : workspace.directories()) {
    words.push_back("-I" + directory);
  }
  words.insert(words.end(), workspace.files().begin(), workspace.files().end());
  return words;
}

void useOriginalNames(const Workspace& workspace, std::vector<Message>* messages) {
  const auto rename = [&workspace](std::optional<Place>* place) {
    if (*place) {
      (*place)->file = workspace.original((*place)->file);
    }
  };
  for (Message& message : *messages) {
    rename(&message.place);
    for (Note& note : message.notes) {
      rename(&note.place);
    }
  }
}

std::string lastLine(std::string text) {
  text.erase(text.find_last_not_of('\n') + 1);
  return text.substr(text.rfind('\n') + 1);
}

}  // namespace

std::vector<Message> lint(const Job& job) {
  // Or a signal would leave the workspace behind.
  const apps::HeldSignals signals;
  const Workspace workspace(job.files);
  const Ended ended = run(commandLine(job, workspace), workspace.directory(), signals);
  std::vector<Message> messages = parseMessages(ended.errors);
  useOriginalNames(workspace, &messages);
  const Message* error = blockingError(messages);
  if (error != nullptr) {
    throw std::runtime_error(lineFor(*error));
  }
  if (!ended.successfully && !hasErrors(messages)) {
    throw std::runtime_error(job.verilator + " failed: " + lastLine(ended.errors));
  }
  return messages;
}

}  // namespace lint_client
