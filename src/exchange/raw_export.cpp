#include "exchange/raw_export.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "exchange/channel_values.h"
#include "util/whole_file.h"

namespace nbx {

namespace {

void write_file(const QString& path, const char* data, std::size_t size) {
  if (const Outcome written = write_whole(path.toStdString(), {data, size}, Sync::kNone); !written)
    throw Exception(path.toStdString() + " can't be written: " + written.reason());
}

template <class Numbers>
QJsonArray array(const Numbers& numbers) {
  QJsonArray result;
  for (const auto number : numbers) result.append(static_cast<double>(number));
  return result;
}

}  // namespace

void write_raw(const std::string& stem, SimFrame& frame) {
  const QString base = QString::fromStdString(stem);
  QJsonArray grids;
  for (const auto& [type, grid] : frame.grids) {
    FieldHandle field = frame.grid(type);
    if (!field) throw Exception(frame.path + " can't be read");
    if (type == kGridSolid) field = within_band(*field);
    const QString channel = QString::fromStdString(grid_type_name(type));
    const QString file = base + "." + channel + ".raw";
    write_file(file, reinterpret_cast<const char*>(field->data()), field->count() * sizeof(float));
    grids.append(QJsonObject{{"channel", channel},
                             {"file", QFileInfo(file).fileName()},
                             {"dims", array(field->dims().v)},
                             {"offset", array(grid.offset.v)},
                             {"staggered_axis", staggered_axis(type)},
                             {"unit", value_unit(type, true)},
                             {"matrix", array(grid.gridMatrix)}});
  }
  const QJsonObject description{{"frame", frame.frameTime.frame()},
                                {"frames_per_second", frame.frameTime.frames_per_second()},
                                {"grids", grids}};
  const QByteArray text = QJsonDocument(description).toJson();
  write_file(base + ".json", text.constData(), text.size());
}

}  // namespace nbx
