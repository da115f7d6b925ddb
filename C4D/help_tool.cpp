#include "C4D/help_tool.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "C4D/commands/register_command.h"
#include "C4D/services/host_access.h"

namespace nbx {

namespace {

constexpr std::int32_t kHelpTool = 1024833;

struct Page {
  std::string name, title, path;
};

/// The folder of the pages, beside an installed plug-in or in the source tree of a build.
std::string documentation_folder() {
  const QDir plugin = QFileInfo(QString::fromStdString(plugin_file())).absoluteDir();
  for (const char* place : {"docs", "../../share/doc/nimbrix", "../../../docs"})
    if (const QDir docs(plugin.filePath(place)); docs.exists("scene_format.md"))
      return QDir::cleanPath(docs.path()).toStdString();
  return {};
}

/// Without the comments, which are for scripts/examples.
std::vector<QByteArray> lines_of(const std::string& path) {
  QFile file(QString::fromStdString(path));
  std::vector<QByteArray> lines;
  if (file.open(QFile::ReadOnly))
    while (!file.atEnd()) {
      QByteArray line = file.readLine();
      while (line.endsWith('\n') || line.endsWith('\r')) line.chop(1);
      if (!line.startsWith("<!--")) lines.push_back(line);
    }
  return lines;
}

std::vector<Page> pages(const std::string& folder) {
  std::vector<Page> all;
  const QDir docs(QString::fromStdString(folder));
  for (const QFileInfo& file : docs.entryInfoList({"*.md"}, QDir::Files, QDir::Name)) {
    const std::string path = file.filePath().toStdString();
    const std::vector<QByteArray> lines = lines_of(path);
    const std::string title = lines.empty() ? "" : lines.front().mid(2).toStdString();
    all.push_back({file.completeBaseName().toStdString(), title, path});
  }
  return all;
}

class HelpTool final : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    return {.verb = "manual",
            .help = "Lists the pages of the documentation, or prints a page",
            .options = {{.name = "PAGE",
                         .value_name = "PAGE",
                         .help = "Page to print; default: lists all pages with their files",
                         .positional = true}}};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    const std::string folder = documentation_folder();
    if (folder.empty()) {
      context.Error("there is no documentation beside the plug-in " + plugin_file());
      return host::kFailed;
    }
    const std::string wanted = arguments.GetString("PAGE");
    std::string names;
    for (const Page& page : pages(folder)) {
      names += (names.empty() ? "" : ", ") + page.name;
      if (wanted.empty())
        context.Result(page.name + ": " + page.title + " (" + page.path + ")");
      else if (wanted == page.name)
        for (const QByteArray& line : lines_of(page.path)) context.Result(line.toStdString());
      else
        continue;
      context.Event("page", {{"name", page.name}, {"title", page.title}, {"path", page.path}});
      if (!wanted.empty()) return host::kDone;
    }
    if (wanted.empty()) return host::kDone;
    context.Error("there is no page \"" + wanted + "\", only " + names);
    return host::kBadInput;
  }
};

}  // namespace

bool register_help_tool(host::HostServices& services, const std::string& name) {
  return register_command<HelpTool>(services, kHelpTool, name);
}

}  // namespace nbx
