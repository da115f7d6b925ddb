// How long the threads of parallel loops wait before they sleep.
#pragma once

namespace app {

/// Makes waiting threads sleep soon. A thread that spins burns the time of those that work, as soon
/// as other programs run on the machine. The user's own setting wins.
///
/// The OpenMP runtime reads its environment when it is loaded, and shared libraries load it before
/// main(). So this starts the program again, once, with the setting in its environment. If that
/// fails the program continues as it is.
void WaitBriefly(char** argv);

}  // namespace app
