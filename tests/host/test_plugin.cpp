#include "tests/host/test_plugin.h"

#include <chrono>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

using namespace host;

HostServices* services = nullptr;
std::string journal;

/// The failure requested by the environment: "refuse" or "start".
bool Fails(const std::string& what) {
  const char* wanted = std::getenv("NBX_TEST_PLUGIN_FAILS");
  return wanted && what == wanted;
}

class Box final : public ObjectData {
 public:
  ~Box() override { journal += "box freed\n"; }
  bool Init(BaseList2D& node) override {
    journal += "box init, size " + std::to_string(node.GetDataInstance().GetReal(1)) + "\n";
    return true;
  }
  bool Message(BaseList2D& node, std::int32_t type, void*) override {
    journal += node.GetName() + " message " + std::to_string(type) + "\n";
    return type == kMessageDocumentLoaded;
  }
  void GetDimension(const BaseObject& object, Vector& center, Vector& radius) const override {
    const double half = object.GetDataInstance().GetReal(test_plugin::kSize) / 2;
    center = {0, half, 0};
    radius = {half, half, half};
  }
};

class Source final : public TagData {
 public:
  bool Init(BaseList2D&) override {
    journal += "source init\n";
    return true;
  }
};

/// Prints what it sees of a scene and its arguments.
class Probe final : public CommandData {
 public:
  ~Probe() override { journal += "probe freed\n"; }
  CommandInfo GetInfo() const override {
    using enum CommonOption;
    CommandInfo info{"probe", "Looks at a scene"};
    info.common = {Frames, Object, Cache, Threads, Device, Set, Force};
    info.options = {{"scene", OptionType::Text, "SCENE", "the scene"},
                    {"axis", OptionType::Choice, "AXIS", "x or y"},
                    {"gain", OptionType::Real, "FACTOR", "a factor"},
                    {"since", OptionType::Long, "FRAME", "a frame, or simply since ever"},
                    {"wait", OptionType::Flag, "", "for an interrupt"},
                    {"throw", OptionType::Flag, "", "an exception"}};
    info.options[0].positional = info.options[0].required = true;
    info.options[1].choices = {"x", "y"};
    info.options[2].minimum = 0;
    info.options[3].value_optional = true;
    return info;
  }

  int Execute(const CommandArguments& arguments, CommandContext& context) override {
    if (arguments.Has("throw")) throw std::runtime_error("thrown by the probe");
    const auto document = context.LoadDocument({arguments.GetString("scene")});
    if (!document) return kBadInput;
    BaseObject* box = context.FindObject(*document, test_plugin::kBox);
    if (!box) return kBadInput;
    std::string frames;
    for (const std::int32_t frame : arguments.GetFrames("frames")) {
      document->SetTime(BaseTime::FromFrame(frame, document->GetFps()));
      document->ExecutePasses(nullptr, true, true, true);
      frames += " " + std::to_string(frame);
      context.Progress("frame " + std::to_string(frame), true);
    }
    const double edge = box->GetDataInstance().GetReal(test_plugin::kSize);
    context.Result(box->GetName() + ", edge " + std::to_string(edge) + ", frames" + frames +
                   ", gain " + std::to_string(arguments.GetReal("gain", 1)) + ", threads " +
                   std::to_string(arguments.GetLong("threads", 1)));
    if (arguments.Has("since")) context.Result("since " + arguments.GetString("since", "ever"));
    context.Event("box", {{"name", box->GetName()}, {"edge", edge}});
    if (arguments.Has("wait")) {
      context.Note("waiting");
      while (context.Interrupts() == 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
      return kInterrupted;
    }
    return kDone;
  }
};

std::unique_ptr<ObjectData> MakeBox() { return std::make_unique<Box>(); }
std::unique_ptr<TagData> MakeSource() { return std::make_unique<Source>(); }
std::unique_ptr<CommandData> MakeProbe() { return std::make_unique<Probe>(); }

bool Start() {
  using namespace test_plugin;
  services->GePrint("the test plug-in starts");
  const BaseContainer* kept = services->GetWorldPluginData(kBox);
  BaseContainer data = kept ? *kept : BaseContainer();
  data.SetLong(1, data.GetLong(1) + 1);
  data.SetReal(2, 0.1);
  data.SetFilename(3, {"/caches"});
  journal += "start " + std::to_string(data.GetLong(1)) + ", kept " +
             std::to_string(services->SetWorldPluginData(kBox, data)) + "\n";
  if (Fails("start")) return false;
  return services->RegisterCommandPlugin(kProbe, "Probe", MakeProbe) &&
         services->RegisterObjectPlugin(kBox, "Box", MakeBox, BoxDescription()) &&
         services->RegisterTagPlugin(kSource, "Source", MakeSource, SourceDescription()) &&
         // An id that is taken can't be registered again.
         !services->RegisterObjectPlugin(kBox, "Box", MakeBox, SourceDescription()) &&
         !services->RegisterCommandPlugin(kProbe + 1, "Probe", MakeProbe);
}

}  // namespace

/// The events so far.
extern "C" __attribute__((visibility("default"))) const char* test_plugin_journal() {
  return journal.c_str();
}

extern "C" __attribute__((visibility("default"))) std::int32_t c4d_main(std::int32_t action,
                                                                        void* p1, void* p2, void*) {
  switch (action) {
    case kActionLoad:
      services = static_cast<HostFunctions*>(p1)->services;
      journal = "load, path " +
                std::string(static_cast<Filename*>(p2)->path.empty() ? "none" : "given") + "\n";
      return Fails("refuse") ? -3 : 1;
    case kActionStart:
      return Start() ? 1 : 0;
    case kActionEnd:
      journal += "end\n";
      return 1;
    case kActionMessage: {
      const auto id = reinterpret_cast<std::intptr_t>(p1);
      journal += "message " + std::to_string(id) + "\n";
      return id == kMessageSetUp ? 1 : -1;
    }
    default:
      return -1;
  }
}
