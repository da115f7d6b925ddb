// A program round a command that keeps what the user would see.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "host/base/document_error.h"
#include "host/format/document_reader.h"
#include "host/format/document_writer.h"
#include "host/interface/command_data.h"
#include "host/program/scene_files.h"
#include "host/small_host.h"

namespace nbx::test {

class RecordingContext final : public host::CommandContext {
 public:
  explicit RecordingContext(host::SmallHost& host) : host_(host) {}

  std::unique_ptr<host::BaseDocument> LoadDocument(const host::Filename& path) override try {
    auto document = host::ReadDocumentFile(path.path, host_.Classes());
    document->Open();
    return document;
  } catch (const host::DocumentError& error) {
    Error(error.what());
    return nullptr;
  }
  std::vector<std::string> CollectFiles(host::BaseDocument& document,
                                        const host::Filename& folder) override {
    return host::CollectFiles(static_cast<host::Document&>(document), folder.path);
  }
  bool SaveDocument(const host::BaseDocument& document, const host::Filename& path) override {
    host::WriteDocumentFile(static_cast<const host::Document&>(document), path.path);
    return true;
  }
  host::BaseObject* FindObject(host::BaseDocument& document, std::int32_t type) override {
    for (host::BaseObject* o = document.GetFirstObject(); o; o = o->GetNext())
      if (o->GetType() == type) return o;
    return nullptr;
  }
  int Interrupts() const override {
    if (interrupts > 0) asked_ = true;
    return interrupts;
  }
  bool WaitEvent(host::SpecialEvent& event) override {
    if (asked_) {
      acted_ = true;
      acted_.notify_all();
    }
    if (on_wait) on_wait();
    return host_.Queue().Wait(event);
  }
  std::optional<bool> Ask(const std::string& question) override {
    return on_ask ? std::optional(on_ask(question)) : std::nullopt;
  }
  void Error(const std::string& text) override { errors.push_back(text); }
  void Warning(const std::string& text) override { warnings.push_back(text); }
  void Note(const std::string& text) override { notes.push_back(text); }
  void Progress(const std::string& text, bool) override {
    if (on_progress) on_progress(text);
  }
  void Result(const std::string& line) override { results.push_back(line); }
  void Event(const std::string& name, const host::EventFields& fields) override {
    events.emplace_back(name, fields);
    if (on_event) on_event(name);
  }
  bool Json() const override { return true; }

  /// The values of one field of all events of a name.
  template <class T>
  std::vector<T> all(const std::string& event, const std::string& field) const {
    std::vector<T> values;
    for (const auto& [name, fields] : events)
      for (const auto& [key, value] : fields)
        if (name == event && key == field) values.push_back(std::get<T>(value));
    return values;
  }

  std::vector<std::string> errors, warnings, notes, results;
  std::vector<std::pair<std::string, host::EventFields>> events;
  std::function<void(const std::string&)> on_event, on_progress;
  std::function<bool(const std::string&)> on_ask;  // without it there is no terminal
  std::function<void()> on_wait;                   // on the main thread
  std::atomic<int> interrupts{0};
  /// On the run's thread: returns when the main thread has seen the interrupt and stopped the run.
  void interrupt_and_wait(int times) {
    interrupt(times);
    acted_.wait(false);
  }
  void interrupt(int times) {
    interrupts = times;
    host_.Queue().Wake();
  }

 private:
  host::SmallHost& host_;
  mutable std::atomic<bool> asked_{false};  // the main thread has seen the interrupt
  std::atomic<bool> acted_{false};          // and waits again
};

}  // namespace nbx::test
