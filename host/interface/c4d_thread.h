// A thread of a plug-in.
#pragma once

#include <atomic>
#include <string>
#include <thread>

namespace host {

/// Asked by long operations whether they should end early.
class BreakTest {
 public:
  virtual ~BreakTest() = default;
  /// True once the operation should end. Any thread.
  virtual bool TestBreak() const = 0;
};

/// Derive a class, implement Main, call Start. Start, End and the destructor belong to one owner
/// thread. IsRunning and TestBreak may be called from any thread. A derived class must call
/// End(true) in its own destructor, before its members are destroyed.
class C4DThread : public BreakTest {
 public:
  C4DThread() = default;
  ~C4DThread() override { End(true); }
  C4DThread(const C4DThread&) = delete;
  C4DThread& operator=(const C4DThread&) = delete;

  /// Runs Main on a new thread. False, without any effect, while the previous run is still active.
  bool Start() {
    if (IsRunning()) return false;
    End(true);
    stop_ = false;
    running_ = true;
    thread_ = std::thread([this] {
      Main();
      running_ = false;
    });
    return true;
  }

  /// Asks the thread to stop. With `wait`, returns after it has stopped.
  void End(bool wait) {
    stop_ = true;
    if (wait && thread_.joinable()) thread_.join();
  }

  /// True from Start until Main has returned.
  bool IsRunning() const { return running_; }

  /// True after End was called; Main should then return soon.
  bool TestBreak() const final { return stop_; }

  virtual std::string GetThreadName() const = 0;

 protected:
  /// The body. It must not throw.
  virtual void Main() = 0;

 private:
  std::atomic<bool> stop_{false};
  std::atomic<bool> running_{false};
  std::thread thread_;
};

}  // namespace host
