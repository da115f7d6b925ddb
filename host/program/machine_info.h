// Information about the machine.
#pragma once

#include "host/interface/base_container.h"

namespace host {

/// Texts under the ids of MachineInfo. Unknown ones are missing.
BaseContainer ReadMachineInfo();

}  // namespace host
