// How host and plug-in connect: the entry point, messages, the table of host functions, and
// registration.
//
// A plug-in is a shared library that exports c4d_main. The host calls it on its main thread:
//     kActionLoad with the table, message kMessageSetUp, kActionStart, ...,
//     message kMessageShutdown, kActionEnd.
// A plug-in may be loaded several times, by one host or by several, and must count its loads.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/interface/command_data.h"
#include "host/interface/node_data.h"
#include "host/interface/parameter_info.h"
#include "host/interface/special_event.h"
#include "host/interface/video_post.h"

namespace host {

/// The `action` of c4d_main, and its arguments p1 and p2. p3 is unused.
enum PluginAction : std::int32_t {
  /// p1: const HostFunctions*, which lives until kActionEnd; p2: const Filename*, the path of the
  /// plug-in's file. 1 if the plug-in can work with this host, else a negative number.
  kActionLoad = 1,
  /// Registers everything. 1: started; 0: not.
  kActionStart = 2,
  kActionEnd = 3,  ///< 1
  /// 3: the kind of interface that this header describes.
  kActionAskApi = 4,
  /// p1: the message's id as std::intptr_t, p2: its data. 1 if it was taken, else -1.
  kActionMessage = 6,
};

/// Ids of kActionMessage, all without data.
enum PluginMessageId : std::int32_t {
  kMessageSetUp = 1,  ///< before kActionStart: resources and libraries; -1 prevents the start
  kMessageLibraries = 1000,    ///< after the start of all plug-ins: libraries can be looked up
  kMessageStarted = 1001,      ///< the host is ready
  kMessageShutdown = 1001084,  ///< stop background work; the result is ignored
};

/// Signature of the entry point, exported as extern "C" c4d_main.
using PluginEntry = std::int32_t (*)(std::int32_t action, void* p1, void* p2, void* p3);

/// The version of this interface. Plug-ins check that it is in 11500 .. 11999.
inline constexpr std::int32_t kApiVersion = 11530;

/// Ids of the texts of the machine information. Unknown ones are missing.
enum MachineInfo : std::int32_t {
  kMachineOs = 2000,
  kMachineOsVersion = 2001,
  kMachineCpu = 2003,
  kMachineCpuType = 2002,
  kMachineCpuFeatures = 2004,
  kMachineGraphics = 1006,         ///< the maker of the graphics driver
  kMachineGraphicsVersion = 1007,  ///< its version of OpenGL
  kMachineGraphicsCard = 1009,
  kMachineGraphicsMemory = 1030,
  kMachinePlugins = 3000,  ///< the other plug-ins that are loaded
};

using ObjectFactory = std::unique_ptr<ObjectData> (*)();
using TagFactory = std::unique_ptr<TagData> (*)();
using VideoPostFactory = std::unique_ptr<VideoPostData> (*)();
using CommandFactory = std::unique_ptr<CommandData> (*)();

/// Formats of SaveDocument.
inline constexpr std::int32_t kSceneFormat = 1001026;

enum class DialogAnswer { No, Yes, Cancel };
enum class FileDialogKind { Load, Save, Folder };

/// Services of the host that belong to no element. Main thread only, except GePrint, EventAdd and
/// SpecialEventAdd.
class HostServices {
 public:
  virtual ~HostServices() = default;

  /// Registrations, only during kActionStart. False if the id or the script name is taken or the
  /// description is invalid (parameter_info.h); the host then prints the reason.
  virtual bool RegisterObjectPlugin(std::int32_t id, const std::string& name, ObjectFactory factory,
                                    const ClassDescription& description) = 0;
  virtual bool RegisterTagPlugin(std::int32_t id, const std::string& name, TagFactory factory,
                                 const ClassDescription& description) = 0;
  /// Each document has one post effect of the class, with default values unless the scene sets
  /// them. Effects run in the order of registration. With a null factory, the effect has parameters
  /// but draws nothing.
  virtual bool RegisterVideoPostPlugin(std::int32_t id, const std::string& name,
                                       VideoPostFactory factory,
                                       const ClassDescription& description) = 0;
  /// A page of preferences: values that apply to all documents.
  virtual bool RegisterPreferencePlugin(std::int32_t id, const std::string& name,
                                        const ClassDescription& description) = 0;
  /// The host creates one instance immediately and keeps it until kActionEnd has returned.
  virtual bool RegisterCommandPlugin(std::int32_t id, const std::string& name,
                                     CommandFactory factory) = 0;

  /// "1.0", the host's own version.
  virtual std::string GetHostVersion() const = 0;
  virtual BaseContainer GetMachineInfo() const = 0;
  /// True in a host that has no windows.
  virtual bool IsRenderMode() const = 0;
  /// The log file chosen by the user. Empty: the plug-in chooses.
  virtual Filename GetLogFile() const = 0;

  /// One line on the host's console: stderr, silent with --quiet.
  virtual void GePrint(const std::string& line) = 0;
  /// Notifies the host that scene data changed, so that it redraws.
  virtual void EventAdd() = 0;
  /// Adds an event to the host's queue, which wakes the main thread. A command receives it with
  /// CommandContext::WaitEvent.
  virtual void SpecialEventAdd(SpecialEvent event) = 0;

  /// A plug-in's container in the preferences of the host. Null if it was never set. Valid until it
  /// is set again.
  virtual const BaseContainer* GetWorldPluginData(std::int32_t id) const = 0;
  /// Sets the container. Its bools, numbers, texts and paths are kept from one start of the host to
  /// the next. False if they can't be saved; the container then lasts until the program ends.
  virtual bool SetWorldPluginData(std::int32_t id, const BaseContainer& data) = 0;

  /// Writes a document, completely or not at all. False on failure or for an unknown format; the
  /// reason is on the console.
  virtual bool SaveDocument(const BaseDocument& document, const Filename& path,
                            std::int32_t format) = 0;

  /// Reads a document to inspect its elements. Mesh files and pictures are not opened, and elements
  /// get no messages. Null on failure; the reason is on the console.
  virtual std::unique_ptr<BaseDocument> LoadDocument(const Filename& path) = 0;

  /// Modal dialogs. Without windows, a message is a console line, a question returns No, and a file
  /// dialog returns an empty path, unless the program has set other answers.
  virtual void MessageDialog(const std::string& text) = 0;
  virtual DialogAnswer QuestionDialog(const std::string& text) = 0;
  virtual Filename FileDialog(FileDialogKind kind, const std::string& title) = 0;
};

/// The argument of kActionLoad. The first word is the version, in every version.
struct HostFunctions {
  std::int32_t api_version = kApiVersion;
  HostServices* services = nullptr;
};

}  // namespace host
