#include "C4D/commands/command_options.h"

#include <charconv>

#include <omp.h>

#include "util/cuda_use_flags.h"

namespace nbx {

bool apply_machine_options(const host::CommandArguments& arguments, host::CommandContext& context) {
  if (arguments.Has("threads")) omp_set_num_threads(arguments.GetLong("threads"));

  const std::string name = arguments.GetString("device", "cpu");
  int device = -1;
  if (name != "cpu") {
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), device);
    if (error != std::errc() || end != name.data() + name.size() || device < 0) {
      context.Error("--device: \"" + name + "\" is neither cpu nor the number of a device");
      return false;
    }
    int count = 0;
    if (cuda::get_device_count(&count) != cuda::kSuccess) count = 0;
    if (device >= count) {
      context.Error("--device: there is no device " + name + ", this machine has " +
                    std::to_string(count));
      return false;
    }
  }
  set_device(cuda_use_flags(), device);
  return true;
}

}  // namespace nbx
