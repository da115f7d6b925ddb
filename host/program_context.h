// The CommandContext of the small host: the program that runs a command.
#pragma once

#include <string>

#include "host/interface/command_data.h"
#include "host/model/model_file.h"
#include "host/program/terminal.h"
#include "host/scene/document.h"
#include "host/small_host.h"

namespace host {

class ProgramContext final : public CommandContext {
 public:
  /// All three must outlive the context. It applies the arguments "set", "object", "fps" and
  /// "force".
  ProgramContext(SmallHost& host, Terminal& terminal, const CommandArguments& arguments)
      : host_(host), terminal_(terminal), arguments_(arguments) {}

  std::unique_ptr<BaseDocument> LoadDocument(const Filename& path) override;
  bool IsModel(const Filename& path) const override { return IsModelName(path.path); }
  std::vector<std::string> CollectFiles(BaseDocument& document, const Filename& folder) override;
  bool SaveDocument(const BaseDocument& document, const Filename& path) override;
  BaseObject* FindObject(BaseDocument& document, std::int32_t type) override;
  int Interrupts() const override;
  bool WaitEvent(SpecialEvent& event) override { return host_.Queue().Wait(event); }
  std::optional<bool> Ask(const std::string& question) override;
  void Error(const std::string& text) override { terminal_.Error(text); }
  void Warning(const std::string& text) override { terminal_.Warning(text); }
  void Note(const std::string& text) override { terminal_.Note(text); }
  void Progress(const std::string& text, bool whole) override { terminal_.Progress(text, whole); }
  void Result(const std::string& line) override { terminal_.Result(line); }
  void Event(const std::string& name, const EventFields& fields) override {
    terminal_.Event(name, fields);
  }
  bool Json() const override { return terminal_.IsJson(); }

 private:
  std::unique_ptr<Document> Read(const std::string& path) const;

  SmallHost& host_;
  Terminal& terminal_;
  const CommandArguments& arguments_;
};

}  // namespace host
