// Commands: the verbs of the program that a plug-in registers.
//
// A command describes itself with plain records. The program builds its command line and help from
// them, checks what the user typed, and calls Execute with values of the declared types. Execute
// communicates with the user only through its context.
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
  Flag,    ///< present or absent
  Text,    ///< anything
  Long,    ///< an integer within the bounds
  Real,    ///< a finite number within the bounds
  Rate,    ///< frames per second: "25", "29.97", "30000/1001"
  Choice,  ///< one of `choices`
  Frames,  ///< "0-100", "0-100x2" (every second), "1,5,9-12", also negative: "-5--1"
  Device,  ///< "cpu", or the number of a device, counted from 0
};

/// One option or positional argument.
struct OptionInfo {
  std::string name = {};  ///< "output" for --output; for positional ones only a key
  OptionType type = OptionType::Text;
  std::string value_name = {};  ///< for the help: "FILE"
  std::string help = {};        ///< one line, including the default
  bool positional = false;
  bool required = false;
  bool repeatable = false;
  bool value_optional = false;  ///< the value may be omitted; not for texts
  double minimum = -2147483648.0, maximum = 2147483647.0;  ///< for Long and Real
  std::vector<std::string> choices = {};
};

/// Options with the same meaning in every command that uses them. Every command also has --quiet,
/// --json, --log-file, --help and --version, which the program handles.
///     Frames   --frames RANGE                   GetFrames("frames")
///     Object   --object NAME                    CommandContext::FindObject
///     Cache    --cache DIR                      GetString("cache"), relative to the current folder
///     Threads  --threads N, at least 1          GetLong("threads"); the command applies it
///     Device   --device cpu or a number         GetString("device", "cpu"); the command applies it
///     Set      --set OBJECT.parameter=VALUE     CommandContext::LoadDocument applies it
///     Fps      --fps RATE                       CommandContext::LoadDocument applies it
///     Force    --force                          CommandContext::LoadDocument lifts its limits, and
///                                               the command lifts its own
enum class CommonOption { Frames, Object, Cache, Threads, Device, Set, Fps, Force };

struct CommandInfo {
  std::string verb = {};  ///< "simulate"
  std::string help = {};  ///< one line
  std::vector<OptionInfo> options = {};
  std::vector<CommonOption> common = {};
};

/// The checked arguments of the user. Keys are names of options.
class CommandArguments {
 public:
  bool Has(const std::string& name) const { return values_.count(name) != 0; }
  /// The last value, or the fallback. GetLong and GetReal are only for options of those types.
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
  /// The frame rate of an option of type Rate, or nothing if it is absent.
  std::optional<FrameRate> GetRate(const std::string& name) const {
    std::string ignored;
    return Has(name) ? FrameRate::Parse(GetString(name), ignored) : std::nullopt;
  }
  /// All values in order.
  const std::vector<std::string>& GetStrings(const std::string& name) const {
    static const std::vector<std::string> none;
    const auto found = values_.find(name);
    return found == values_.end() ? none : found->second;
  }
  /// The frames of an option of type Frames, sorted and without duplicates. Empty if it is absent.
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

/// The program as a running command sees it. Valid while Execute runs. The output functions and
/// Interrupts may be called from any thread, the others only from the thread of Execute.
class CommandContext {
 public:
  virtual ~CommandContext() = default;

  /// Reads a scene, or imports a model file (.glb, .gltf, .obj, .ply, .fbx ...). For an animated
  /// model the frame rate comes from --fps, or the user is asked for it. Applies --set: the
  /// parameter gets the value for the whole run and loses its keyframes. The document is then
  /// evaluated at its first frame, and each element has received kMessageDocumentLoaded. On failure
  /// the error has been printed and the result is null: return kBadInput.
  virtual std::unique_ptr<BaseDocument> LoadDocument(const Filename& path) = 0;
  /// True for the name of a model file, which LoadDocument imports.
  virtual bool IsModel(const Filename& path) const {
    static_cast<void>(path);
    return false;
  }
  /// Copies the files of the document into the folder: meshes with the files that they refer to,
  /// and pictures. The document then belongs to the folder and uses relative paths for everything
  /// in it, so the folder can be moved. Returns one line for each file that can't be copied; the
  /// document keeps its old path.
  virtual std::vector<std::string> CollectFiles(BaseDocument& document, const Filename& folder) = 0;
  /// Writes the document as a scene. False on failure; the error has been printed.
  virtual bool SaveDocument(const BaseDocument& document, const Filename& path) = 0;

  /// The object to process: the one named with --object, which must have that type, or else the
  /// only one of that type. Otherwise the error has been printed and the result is null: return
  /// kBadInput.
  virtual BaseObject* FindObject(BaseDocument& document, std::int32_t type) = 0;

  /// Number of interrupts by the user. At 1, stop at the end of the frame. From 2 on, stop at once.
  /// Return kInterrupted in both cases.
  virtual int Interrupts() const = 0;

  /// Waits, without using the processor, for a special event or an interrupt. True: `event` is the
  /// oldest event. False: check Interrupts, then wait again. Only on the thread of Execute.
  virtual bool WaitEvent(SpecialEvent& event) = 0;

  /// Asks a question that is answered with yes or no. Nothing if there is no terminal to ask on.
  virtual std::optional<bool> Ask(const std::string& question) {
    static_cast<void>(question);
    return {};
  }

  /// One line to stderr: "nimbrix: error: " + text, or "nimbrix: warning: " + text. Never
  /// suppressed.
  virtual void Error(const std::string& text) = 0;
  virtual void Warning(const std::string& text) = 0;
  /// One line to stderr, unless --quiet.
  virtual void Note(const std::string& text) = 0;
  /// Progress to stderr, unless --quiet. On a terminal the line is redrawn at each call. Elsewhere
  /// only calls with `whole` (a frame is done) print a line.
  virtual void Progress(const std::string& text, bool whole) = 0;

  /// A result for people: one line to stdout, unless --json.
  virtual void Result(const std::string& line) = 0;
  /// A result for programs: with --json, one line {"event": name, ...} to stdout. Infinities and
  /// NaN become null.
  virtual void Event(const std::string& name, const EventFields& fields) = 0;
  virtual bool Json() const = 0;
};

class CommandData {
 public:
  virtual ~CommandData() = default;
  virtual CommandInfo GetInfo() const = 0;
  /// Runs on the main thread. Returns the exit code of the program. An exception ends the program
  /// with one line and kFailed.
  virtual int Execute(const CommandArguments& arguments, CommandContext& context) = 0;
};

}  // namespace host
