#include "host/small_host.h"

#include <algorithm>
#include <utility>

#include "host/base/document_error.h"
#include "host/format/document_reader.h"
#include "host/format/document_writer.h"
#include "host/program/describe_command.h"
#include "host/program/help_command.h"
#include "host/program/machine_info.h"
#include "host/program/new_command.h"

namespace host {

SmallHost::SmallHost() {
  AddCommand(std::make_unique<DescribeCommand>(classes_));
  AddCommand(std::make_unique<HelpCommand>(classes_, [this] {
    std::vector<std::string> verbs;
    for (const Command& command : commands_) verbs.push_back(command.info.verb);
    return verbs;
  }));
  AddCommand(std::make_unique<NewCommand>(classes_));
}

bool SmallHost::Registered(const std::string& name, const std::string& wrong) {
  if (!wrong.empty()) GePrint("registration of " + name + ": " + wrong);
  return wrong.empty();
}

bool SmallHost::RegisterObjectPlugin(std::int32_t id, const std::string& name,
                                     ObjectFactory factory, const ClassDescription& description) {
  return Registered(name, classes_.objects.Add({id, name, description, factory}));
}

bool SmallHost::RegisterTagPlugin(std::int32_t id, const std::string& name, TagFactory factory,
                                  const ClassDescription& description) {
  return Registered(name, classes_.tags.Add({id, name, description, factory}));
}

bool SmallHost::RegisterVideoPostPlugin(std::int32_t id, const std::string& name,
                                        VideoPostFactory factory,
                                        const ClassDescription& description) {
  return Registered(name, classes_.post_effects.Add({id, name, description, factory}));
}

bool SmallHost::RegisterPreferencePlugin(std::int32_t id, const std::string& name,
                                         const ClassDescription& description) {
  return Registered(name, classes_.preferences.Add({id, name, description, {}}));
}

bool SmallHost::RegisterCommandPlugin(std::int32_t id, const std::string& name,
                                      CommandFactory factory) {
  std::unique_ptr<CommandData> data = factory();
  CommandInfo info = data->GetInfo();
  const bool taken = std::any_of(commands_.begin(), commands_.end(), [&](const Command& command) {
    return command.id == id || command.info.verb == info.verb;
  });
  if (taken || info.verb.empty())
    return Registered(name, taken ? "the id or the verb is taken" : "the command has no verb");
  commands_.push_back({id, name, std::move(info), std::move(data)});
  return true;
}

std::string SmallHost::GetHostVersion() const { return NBX_HOST_VERSION; }

bool SmallHost::SaveDocument(const BaseDocument& document, const Filename& path,
                             std::int32_t format) {
  if (format != kSceneFormat) return false;
  try {
    WriteDocumentFile(static_cast<const Document&>(document), path.path);
    return true;
  } catch (const DocumentError& error) {
    GePrint(error.what());
    return false;
  }
}

std::unique_ptr<BaseDocument> SmallHost::LoadDocument(const Filename& path) try {
  return ReadDocumentFile(path.path, classes_);
} catch (const DocumentError& error) {
  GePrint(error.what());
  return nullptr;
}

BaseContainer SmallHost::GetMachineInfo() const { return ReadMachineInfo(); }

void SmallHost::GePrint(const std::string& line) {
  const std::lock_guard lock(mutex_);
  console_.push_back(line);
}

std::vector<std::string> SmallHost::TakeConsole() {
  const std::lock_guard lock(mutex_);
  return std::exchange(console_, {});
}

}  // namespace host
