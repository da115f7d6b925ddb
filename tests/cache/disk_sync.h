// The calls that wait for the disk, as this test program has them: nothing waits, and tests see the
// calls, hold them up or let them fail.
#pragma once

#include <functional>
#include <semaphore>
#include <string>

namespace nbx::test {

/// Runs at each such call, on its thread, with the path of the file or folder. The result is the
/// error of the call, 0 for none. One lives at a time.
class OnSync {
 public:
  using Action = std::function<int(const std::string& path)>;
  explicit OnSync(Action action);
  ~OnSync();
  OnSync(const OnSync&) = delete;
  OnSync& operator=(const OnSync&) = delete;
};

/// Holds up the first one who syncs a file.
class HeldSync {
 public:
  explicit HeldSync(const std::string& path)
      : hook_([this, path](const std::string& synced) {
          if (synced != path || held_once_) return 0;
          held_once_ = true;
          held_.release();
          free_.acquire();
          return 0;
        }) {}
  void wait() { held_.acquire(); }
  void release() { free_.release(); }

 private:
  bool held_once_ = false;
  std::binary_semaphore held_{0}, free_{0};
  OnSync hook_;
};

}  // namespace nbx::test
