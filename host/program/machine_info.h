// What the host can tell about the machine.
#pragma once

#include "host/interface/base_container.h"

namespace host {

/// Texts under the ids of MachineInfo; one that can't be found out is missing.
BaseContainer ReadMachineInfo();

}  // namespace host
