#include "app/AppSession.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <system_error>

#include "host/render/OmHtmlRenderer.h"
#include "host/render/OmJsonRenderer.h"
#include "host/render/OmTextRenderer.h"

namespace {

const char* const kHostCommands[] = {"LOAD", "SET", "SPLIT", "WEIGHT", "GLMIXFIT"};

bool IsKnownCommand(const std::string& name) {
  for (const char* known : kHostCommands) {
    if (name == known) return true;
  }
  return false;
}

std::string Where(const std::string& origin, int line, int column) {
  return origin + ":" + std::to_string(line) + ":" + std::to_string(column) + ": ";
}

}  // namespace

void AppSession::Error(OmHeading& where, const std::string& text) {
  where.AddMessage(OmMessage::ERROR, text);
  fbAnyError = true;
}

bool AppSession::RunFile(const std::string& path) {
  std::string text;
  if (path == "-") {
    std::ostringstream buffer;
    buffer << std::cin.rdbuf();
    text = buffer.str();
  } else {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
      Error(fDocument.fRoot, path + ": the command file cannot be read.");
      return false;
    }
    std::ostringstream buffer;
    buffer << in.rdbuf();
    text = buffer.str();
  }
  RunText(text, path == "-" ? std::string("<stdin>") : path);
  return true;
}

void AppSession::RunText(const std::string& text, const std::string& origin) {
  std::vector<CommandText> commands;
  std::vector<CommandTextError> errors;
  CommandSplitter::Split(text, commands, errors);
  for (const auto& e : errors) Error(fDocument.fRoot, Where(origin, e.fLine, e.fColumn) + e.fMessage + ".");
  for (const auto& command : commands) RunCommand(command, origin);
}

void AppSession::RunCommand(const CommandText& command, const std::string& origin) {
  OmHeading& heading = fDocument.fRoot.AddHeading(command.fName.empty() ? "Command" : command.fName);
  heading.AddText().fvLines.push_back(command.fText + ".");
  if (!IsKnownCommand(command.fName)) {
    Error(heading, Where(origin, command.fLine, command.fColumn) + "'" + command.fName +
                       "' is not a command. The commands are LOAD, SET, SPLIT, WEIGHT and GLMIXFIT.");
    return;
  }
  heading.AddMessage(OmMessage::WARNING,
                     Where(origin, command.fLine, command.fColumn) + "The " + command.fName +
                         " command is not available in this version of glmixfit; it was skipped.");
}

bool AppSession::WriteReports(std::ostream& terminal, std::string& error) const {
  if (fOptions.fbText) terminal << OmTextRenderer(fOptions.fWidth).Render(fDocument) << std::flush;
  if (!fOptions.fbHtml && !fOptions.fbJson) return true;

  std::error_code ec;
  std::filesystem::create_directories(fOptions.fOutputDir, ec);
  if (ec) {
    error = "cannot create the output folder '" + fOptions.fOutputDir + "': " + ec.message();
    return false;
  }
  const std::filesystem::path dir(fOptions.fOutputDir);
  if (fOptions.fbHtml && !OmHtmlRenderer().WriteFile(fDocument, (dir / "report.html").string(), error)) return false;
  if (fOptions.fbJson && !OmJsonRenderer().WriteFile(fDocument, (dir / "report.json").string(), error)) return false;
  return true;
}
