// The host: registrations of plug-ins, and the services that belong to no element.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "host/interface/plugin.h"
#include "host/program/event_queue.h"
#include "host/program/plugin_preferences.h"
#include "host/scene/element_class.h"

namespace host {

class SmallHost : public HostServices {
 public:
  struct Command {
    std::int32_t id = 0;
    std::string name;
    CommandInfo info;
    std::unique_ptr<CommandData> data;
  };

  /// Registers the built-in types and the commands `describe`, `help` and `new`.
  SmallHost();

  bool RegisterObjectPlugin(std::int32_t id, const std::string& name, ObjectFactory factory,
                            const ClassDescription& description) override;
  bool RegisterTagPlugin(std::int32_t id, const std::string& name, TagFactory factory,
                         const ClassDescription& description) override;
  bool RegisterVideoPostPlugin(std::int32_t id, const std::string& name, VideoPostFactory factory,
                               const ClassDescription& description) override;
  bool RegisterPreferencePlugin(std::int32_t id, const std::string& name,
                                const ClassDescription& description) override;
  bool RegisterCommandPlugin(std::int32_t id, const std::string& name,
                             CommandFactory factory) override;
  std::string GetHostVersion() const override;
  BaseContainer GetMachineInfo() const override;
  bool IsRenderMode() const override { return true; }
  Filename GetLogFile() const override { return log_file_; }
  void GePrint(const std::string& line) override;
  void EventAdd() override { ++events_; }
  void SpecialEventAdd(SpecialEvent event) override { queue_.Add(std::move(event)); }
  const BaseContainer* GetWorldPluginData(std::int32_t id) const override {
    return preferences_.Find(id);
  }
  bool SetWorldPluginData(std::int32_t id, const BaseContainer& data) override {
    return preferences_.Set(id, data);
  }
  bool SaveDocument(const BaseDocument& document, const Filename& path,
                    std::int32_t format) override;
  std::unique_ptr<BaseDocument> LoadDocument(const Filename& path) override;
  void MessageDialog(const std::string& text) override { GePrint(text); }
  DialogAnswer QuestionDialog(const std::string& text) override {
    GePrint(text);
    return answer_;
  }
  Filename FileDialog(FileDialogKind, const std::string&) override { return chosen_file_; }

  /// Adds a command of the host. Its verb must be free.
  void AddCommand(std::unique_ptr<CommandData> command) {
    CommandInfo info = command->GetInfo();
    commands_.push_back({0, info.verb, info, std::move(command)});
  }

  const SceneClasses& Classes() const { return classes_; }
  const std::vector<Command>& Commands() const { return commands_; }
  /// Number of calls of EventAdd so far.
  int Events() const { return events_; }

  EventQueue& Queue() { return queue_; }
  PluginPreferences& Preferences() { return preferences_; }
  /// Sets the answers of all dialogs.
  void SetAnswers(DialogAnswer answer, const Filename& file) {
    answer_ = answer;
    chosen_file_ = file;
  }

  void SetLogFile(const std::string& path) { log_file_ = {path}; }
  /// Returns the console lines and clears them. They are shown only if the start of the plug-in
  /// fails.
  std::vector<std::string> TakeConsole();

  /// Destroys all commands. Must run before their plug-in ends.
  void DropCommands() { commands_.clear(); }

 private:
  bool Registered(const std::string& name, const std::string& wrong);

  SceneClasses classes_;
  std::vector<Command> commands_;
  Filename log_file_;
  std::mutex mutex_;  ///< guards console_
  std::vector<std::string> console_;
  std::atomic<int> events_{0};
  EventQueue queue_;
  PluginPreferences preferences_;
  DialogAnswer answer_ = DialogAnswer::No;
  Filename chosen_file_;
};

}  // namespace host
