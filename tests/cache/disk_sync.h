// Replaces the calls that wait for the disk in this test program. Nothing waits, and tests can
// observe the calls, delay them or make them fail.
#pragma once

#include <functional>
#include <semaphore>
#include <string>

namespace nbx::test {

/// Runs at each such call, on its thread, with the path of the file or folder. The result is the
/// error of the call, or 0. Only one may exist at a time.
class OnSync {
 public:
  using Action = std::function<int(const std::string& path)>;
  explicit OnSync(Action action);
  ~OnSync();
  OnSync(const OnSync&) = delete;
  OnSync& operator=(const OnSync&) = delete;
};

/// Blocks the first sync of a file.
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
