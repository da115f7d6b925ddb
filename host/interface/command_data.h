// Commands: the verbs of the program that a plug-in registers.
//
// A command describes itself with plain records. The program makes its command line and its help
// from them, checks what the user typed, and calls Execute with what is left: values of the stated
// kinds. Execute talks to the user through its context alone.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "host/interface/scene.h"
#include "host/interface/special_event.h"

namespace host {

enum ExitCode : int { kDone = 0, kFailed = 1, kBadInput = 2, kInterrupted = 130 };

enum class OptionType {
  Flag,    ///< there or not
  Text,    ///< anything
  Long,    ///< a whole number within the bounds
  Real,    ///< a finite number within the bounds
  Rate,    ///< frames per second: "25", "29.97", "30000/1001"
  Choice,  ///< one of `choices`
  Frames,  ///< "0-100", "0-100x2" (every second), "1,5,9-12"; negative frames too: "-5--1"
  Device,  ///< "cpu", or the number of a device from 0 on
};

/// One option or positional argument.
struct OptionInfo {
  std::string name = {};  ///< "output" for --output; of a positional one only the key
  OptionType type = OptionType::Text;
  std::string value_name = {};  ///< for help: "FILE"
  std::string help = {};        ///< one line, default included
  bool positional = false;
  bool required = false;
  bool repeatable = false;
  bool value_optional = false;  ///< Has() without a value is fine; not for texts
  double minimum = -2147483648.0, maximum = 2147483647.0;  ///< for Long and Real
  std::vector<std::string> choices = {};
};

/// Options that mean the same in each command that takes them. Every command also takes --quiet,
/// --json, --log-file, --help and --version, which the program sees to.
///     Frames   --frames RANGE                   GetFrames("frames")
///     Object   --object NAME                    CommandContext::FindObject
///     Cache    --cache DIR                      GetString("cache"), relative to the current folder
///     Threads  --threads N, at least 1          GetLong("threads"); the command obeys it
///     Device   --device cpu or a number         GetString("device", "cpu"); the command obeys it
///     Set      --set OBJECT.parameter=VALUE     CommandContext::LoadDocument applies it
///     Fps      --fps RATE                       CommandContext::LoadDocument applies it
///     Force    --force                          CommandContext::LoadDocument takes scenes that ask
///                                               for more work than it lets pass; so does the
///                                               command
enum class CommonOption { Frames, Object, Cache, Threads, Device, Set, Fps, Force };

struct CommandInfo {
  std::string verb = {};  ///< "simulate"
  std::string help = {};  ///< one line
  std::vector<OptionInfo> options = {};
  std::vector<CommonOption> common = {};
};

/// What the user typed, checked. Keys are names of options.
class CommandArguments {
 public:
  bool Has(const std::string& name) const { return values_.count(name) != 0; }
  /// The last value given, or the fallback. Long and Real only for options of those types.
  std::string GetString(const std::string& name, const std::string& fallback = {}) const {
    const auto& all = GetStrings(name);
    return all.empty() ? fallback : all.back();
  }
  std::int32_t GetLong(const std::string& name, std::int32_t fallback = 0) const {
    return Has(name) ? static_cast<std::int32_t>(std::stol(GetString(name))) : fallback;
  }
  double GetReal(const std::string& name, double fallback = 0) const {
    return Has(name) ? std::stod(GetString(name)) : fallback;
  }
  /// The frame rate of an option of type Rate; nothing if it wasn't given.
  std::optional<FrameRate> GetRate(const std::string& name) const {
    std::string ignored;
    return Has(name) ? FrameRate::Parse(GetString(name), ignored) : std::nullopt;
  }
  /// All values in the order given.
  const std::vector<std::string>& GetStrings(const std::string& name) const {
    static const std::vector<std::string> none;
    const auto found = values_.find(name);
    return found == values_.end() ? none : found->second;
  }
  /// The frames of an option of type Frames, ascending and each once; empty if it wasn't given.
  const std::vector<std::int32_t>& GetFrames(const std::string& name) const {
    static const std::vector<std::int32_t> none;
    const auto found = frames_.find(name);
    return found == frames_.end() ? none : found->second;
  }

  void Add(const std::string& name, const std::string& value) { values_[name].push_back(value); }
  void AddFlag(const std::string& name) { values_[name]; }
  void AddFrames(const std::string& name, std::vector<std::int32_t> frames) {
    values_[name];
    frames_[name] = std::move(frames);
  }

 private:
  std::map<std::string, std::vector<std::string>> values_;
  std::map<std::string, std::vector<std::int32_t>> frames_;
};

/// One field of an event, for --json.
using EventValue = std::variant<bool, std::int64_t, double, std::string, std::vector<double>,
                                std::vector<std::string>>;
using EventFields = std::vector<std::pair<std::string, EventValue>>;

/// The program, as a running command sees it. Lives as long as Execute runs. The output operations
/// and Interrupts may be called from any thread; the others on the thread of Execute.
class CommandContext {
 public:
  virtual ~CommandContext() = default;

  /// Reads a scene, or makes one of a modeling program's file (.glb, .gltf, .obj, .ply, .fbx ...),
  /// whose frame rate --fps gives or the user is asked for, and applies what the user gave with
  /// --set: the parameter takes the value for all time, and loses its keyframes. The document then
  /// stands evaluated at its first frame, and each element has got kMessageDocumentLoaded. On
  /// failure the error has been told, and the result is null: return kBadInput.
  virtual std::unique_ptr<BaseDocument> LoadDocument(const Filename& path) = 0;
  /// True for a name of a modeling program's file, which LoadDocument makes a scene of.
  virtual bool IsModel(const Filename& path) const {
    static_cast<void>(path);
    return false;
  }
  /// Copies the files that the document names into the folder: meshes, with the files that they
  /// refer to, and pictures. The document then belongs to the folder and names everything in it by
  /// paths from there, so the folder stays whole wherever it goes. Returns a line for each file
  /// that can't be copied, which the document goes on naming where it is.
  virtual std::vector<std::string> CollectFiles(BaseDocument& document, const Filename& folder) = 0;
  /// Writes the document as a scene. False if that failed; the error has been told.
  virtual bool SaveDocument(const BaseDocument& document, const Filename& path) = 0;

  /// The object to work on: the one named with --object, which must be of that type, else the only
  /// one of that type. Otherwise the error has been told, and the result is null: return kBadInput.
  virtual BaseObject* FindObject(BaseDocument& document, std::int32_t type) = 0;

  /// Interrupts by the user so far: at 1 stop at the end of the frame, from 2 on stop at once; in
  /// both cases return kInterrupted.
  virtual int Interrupts() const = 0;

  /// Waits, without using the processor, for a special event or an interrupt. True: `event` is the
  /// oldest one. False: look at Interrupts, then wait again. On the thread of Execute.
  virtual bool WaitEvent(SpecialEvent& event) = 0;

  /// One line to stderr: "nimbrix: error: " + text, and "nimbrix: warning: " + text. Never
  /// suppressed.
  virtual void Error(const std::string& text) = 0;
  virtual void Warning(const std::string& text) = 0;
  /// One line to stderr, unless --quiet.
  virtual void Note(const std::string& text) = 0;
  /// Progress to stderr, unless --quiet. On a terminal one line, redrawn at each call; elsewhere a
  /// line of its own, only where `whole` (a frame is done).
  virtual void Progress(const std::string& text, bool whole) = 0;

  /// A result for people: one line to stdout, unless --json.
  virtual void Result(const std::string& line) = 0;
  /// A result for programs: with --json one line {"event": name, ...} on stdout; else nothing.
  /// Numbers that aren't finite become null.
  virtual void Event(const std::string& name, const EventFields& fields) = 0;
  virtual bool Json() const = 0;
};

class CommandData {
 public:
  virtual ~CommandData() = default;
  virtual CommandInfo GetInfo() const = 0;
  /// On the main thread. The result is the program's exit code. What it throws ends the program
  /// with one line and kFailed.
  virtual int Execute(const CommandArguments& arguments, CommandContext& context) = 0;
};

}  // namespace host
