#include "app/AppDataCommands.h"

#include "app/AppCaseCommands.h"
#include "app/AppCommandReader.h"
#include "app/AppComputeCommand.h"
#include "app/AppDataContext.h"
#include "app/AppDictionaryCommands.h"
#include "app/AppRecodeCommand.h"
#include "app/AppWriteCommand.h"
#include "host/data/ZORV_StopFlag.h"
#include "host/output/BP_ToFront.h"
#include "host/output/BpError.h"
#include "host/output/BpString.h"

namespace {

struct DataCommand {
  const char* fName;
  const char* fTitle;
  void (*fRun)(AppCommandReader& reader, AppDataContext& context);
};

// In the order the help lists them.
const DataCommand kCommands[] = {
    {"COMPUTE", "Compute", [](AppCommandReader& r, AppDataContext& c) { AppComputeCommand::Run(r, c.fpData); }},
    {"RECODE", "Recode", [](AppCommandReader& r, AppDataContext& c) { AppRecodeCommand::Run(r, c.fpData); }},
    {"SELECT", "Select Cases", [](AppCommandReader& r, AppDataContext& c) { AppCaseCommands::Select(r, c.fpData); }},
    {"FILTER", "Filter", [](AppCommandReader& r, AppDataContext& c) { AppCaseCommands::Filter(r, c.fpData); }},
    {"LABEL", "Variable Labels",
     [](AppCommandReader& r, AppDataContext& c) { AppDictionaryCommands::Label(r, c.fpData); }},
    {"VALUES", "Value Labels", [](AppCommandReader& r, AppDataContext& c) { AppDictionaryCommands::Values(r, c.fpData); }},
    {"MISSING", "Missing Values",
     [](AppCommandReader& r, AppDataContext& c) { AppDictionaryCommands::Missing(r, c.fpData); }},
    {"LEVEL", "Measurement Level",
     [](AppCommandReader& r, AppDataContext& c) { AppDictionaryCommands::Level(r, c.fpData); }},
    {"FORMAT", "Formats", [](AppCommandReader& r, AppDataContext& c) { AppDictionaryCommands::Format(r, c.fpData); }},
    {"WRITE", "Write Data", [](AppCommandReader& r, AppDataContext& c) { AppWriteCommand::Run(r, c); }},
};

const DataCommand* Find(const std::string& name) {
  for (const DataCommand& command : kCommands) {
    if (name == command.fName) return &command;
  }
  return nullptr;
}

}  // namespace

const char* AppDataCommands::Title(const std::string& name) {
  const DataCommand* command = Find(name);
  return command != nullptr ? command->fTitle : nullptr;
}

void AppDataCommands::Run(AppCommandReader& reader, AppDataContext& context) {
  const DataCommand* command = Find(reader.GetCommand().fName);
  if (command != nullptr) command->fRun(reader, context);
}

std::string AppDataCommands::Names() {
  std::string names;
  for (const DataCommand& command : kCommands) names += std::string(names.empty() ? "" : ", ") + command.fName;
  return names;
}

void AppDataCommands::Say(const std::string& text) { BP_ToFront(1, BP_Character(text)); }

void AppDataCommands::Warn(const std::string& text) {
  BpError(BpString(text, false), BpErrorShowOutput, BpErrorLevelWarning);
}

void AppDataCommands::WarnFailures(long failures, const std::string& consequence) {
  if (failures <= 0) return;
  Warn(Count(failures, "value", "values") +
       " could not be computed (a division by zero, or a value outside a function's domain or beyond the range of "
       "numbers) and " + (failures == 1 ? "is" : "are") + " missing" + consequence + ".");
}

void AppDataCommands::WarnCut(long cut, const std::string& name, int width) {
  if (cut <= 0) return;
  Warn(Count(cut, "text was", "texts were") + " cut to the width of " + name + " (" + Count(width, "byte", "bytes") +
       ").");
}

void AppDataCommands::StopIfInterrupted(const AppCommandReader& reader) {
  if (!ZORV_StopFlag::IsRaised()) return;
  reader.FailAt(reader.GetCommand().fvTokens.front(), "the command was interrupted before it changed anything");
}

std::string AppDataCommands::Count(long n, const std::string& singular, const std::string& plural) {
  return std::to_string(n) + " " + (n == 1 ? singular : plural);
}
