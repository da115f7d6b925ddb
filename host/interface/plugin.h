// How host and plug-in find one another: the entry that the host calls, the messages, the table of
// host functions, and registration.
//
// A plug-in is a shared library that exports c4d_main. The host calls it on its main thread:
//     kActionLoad with the table, message kMessageSetUp, kActionStart, ...,
//     message kMessageShutdown, kActionEnd.
// A plug-in may stand in several hosts or be loaded several times by one: it counts.
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

/// `action` of c4d_main, and what p1 and p2 are. p3 is unused.
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
  kMessageSetUp = 1,         ///< before kActionStart: resources and libraries; not taken: no start
  kMessageLibraries = 1000,  ///< after the start of all plug-ins: libraries can be looked up
  kMessageStarted = 1001,    ///< the host is ready
  kMessageShutdown = 1001084,  ///< stop what runs in the background; anything is a good answer
};

/// Signature of the entry, exported as extern "C" c4d_main.
using PluginEntry = std::int32_t (*)(std::int32_t action, void* p1, void* p2, void* p3);

/// The version of this interface; plug-ins check that it lies in 11500 .. 11999.
inline constexpr std::int32_t kApiVersion = 11530;

/// Ids of the machine information's texts. One that the host can't tell is missing.
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

/// The operations of the host that belong to no element. Main thread only, but for GePrint,
/// EventAdd and SpecialEventAdd.
class HostServices {
 public:
  virtual ~HostServices() = default;

  /// Registrations, only during kActionStart. False if the id or the script name is taken or the
  /// description is wrong (parameter_info.h); the host then prints what is wrong.
  virtual bool RegisterObjectPlugin(std::int32_t id, const std::string& name, ObjectFactory factory,
                                    const ClassDescription& description) = 0;
  virtual bool RegisterTagPlugin(std::int32_t id, const std::string& name, TagFactory factory,
                                 const ClassDescription& description) = 0;
  /// Each document has one post effect of the class, with the defaults of its description where the
  /// scene says nothing of it. Effects act in the order of their registration. A null factory makes
  /// effects that have parameters and draw nothing.
  virtual bool RegisterVideoPostPlugin(std::int32_t id, const std::string& name,
                                       VideoPostFactory factory,
                                       const ClassDescription& description) = 0;
  /// A page of preferences: values that hold for all documents.
  virtual bool RegisterPreferencePlugin(std::int32_t id, const std::string& name,
                                        const ClassDescription& description) = 0;
  /// The host makes one instance, at once, and keeps it until after kActionEnd's return.
  virtual bool RegisterCommandPlugin(std::int32_t id, const std::string& name,
                                     CommandFactory factory) = 0;

  /// "1.0", the host's own version.
  virtual std::string GetHostVersion() const = 0;
  virtual BaseContainer GetMachineInfo() const = 0;
  /// True in a host that has no windows.
  virtual bool IsRenderMode() const = 0;
  /// The file that the user wants the log in; empty: the plug-in's choice.
  virtual Filename GetLogFile() const = 0;

  /// One line on the host's console: stderr, silent with --quiet.
  virtual void GePrint(const std::string& line) = 0;
  /// Tells the host that data of the scene changed, so that it draws anew.
  virtual void EventAdd() = 0;
  /// Puts an event into the host's queue, which wakes the main thread. A command takes it with
  /// CommandContext::WaitEvent.
  virtual void SpecialEventAdd(SpecialEvent event) = 0;

  /// A plug-in's container in the host's preferences; null if it never set one. Valid until it is
  /// set again.
  virtual const BaseContainer* GetWorldPluginData(std::int32_t id) const = 0;
  /// Sets it, and keeps its bools, numbers, texts and paths from one start of the host to the next.
  /// False if they can't be kept: the container then lasts as long as the program.
  virtual bool SetWorldPluginData(std::int32_t id, const BaseContainer& data) = 0;

  /// Writes a document, whole or not at all. False if that fails or the format isn't known; the
  /// reason has gone to the console.
  virtual bool SaveDocument(const BaseDocument& document, const Filename& path,
                            std::int32_t format) = 0;

  /// Reads a document to look at its elements: mesh files and pictures aren't opened, and no
  /// element gets a message. Null if it can't be read; the reason has gone to the console.
  virtual std::unique_ptr<BaseDocument> LoadDocument(const Filename& path) = 0;

  /// Boxes that wait for the user. Without windows a message is a line on the console, a question
  /// gets No and a file dialog an empty path, unless the program has chosen other answers.
  virtual void MessageDialog(const std::string& text) = 0;
  virtual DialogAnswer QuestionDialog(const std::string& text) = 0;
  virtual Filename FileDialog(FileDialogKind kind, const std::string& title) = 0;
};

/// What kActionLoad hands over. The first word is the version, in every version.
struct HostFunctions {
  std::int32_t api_version = kApiVersion;
  HostServices* services = nullptr;
};

}  // namespace host
