// Registration of a command, with the guard around its entry.
#pragma once

#include "C4D/services/guard.h"
#include "host/interface/plugin.h"

namespace nbx {

template <class Command>
class GuardedCommand final : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override { return command_.GetInfo(); }

  /// An exception is one error line and a failed run, and is logged.
  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    const std::string entry = "command " + GetInfo().verb;
    const auto fail = [&context](const std::string& why) {
      context.Error(why);
      return int{host::kFailed};
    };
    return guarded(entry.c_str(), fail, [&] { return command_.Execute(arguments, context); });
  }

 private:
  Command command_;
};

template <class Command>
bool register_command(host::HostServices& services, std::int32_t id, const std::string& name) {
  return services.RegisterCommandPlugin(id, name, []() -> std::unique_ptr<host::CommandData> {
    return std::make_unique<GuardedCommand<Command>>();
  });
}

}  // namespace nbx
