#include "cache/cache_notes.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

#include "util/whole_file.h"

namespace nbx {

namespace {

std::string notes_file(const std::string& directory) { return directory + "/CacheNotes.json"; }

QString text(const std::string& s) { return QString::fromStdString(s); }

}  // namespace

void CacheNotes::begin(const RunNote& run) {
  std::erase_if(runs, [&](const RunNote& earlier) { return earlier.first >= run.first; });
  runs.push_back(run);
  if (runs.size() == 1) origin.reset();
  if (origin) origin->frame = std::min(origin->frame, run.first - 1);
}

CacheNotes read_cache_notes(const std::string& directory) {
  CacheNotes notes;
  QFile file(text(notes_file(directory)));
  if (!file.open(QFile::ReadOnly)) return notes;
  const QJsonObject all = QJsonDocument::fromJson(file.readAll()).object();
  for (const auto& value : all["runs"].toArray()) {
    const QJsonObject run = value.toObject();
    notes.runs.push_back({run["first"].toInt(), run["version"].toString().toStdString(),
                          run["seconds"].toDouble(), run["substeps"].toInt()});
  }
  const QJsonObject origin = all["origin"].toObject();
  if (!origin.isEmpty())
    notes.origin = CacheOrigin{origin["cache"].toString().toStdString(), origin["frame"].toInt()};
  return notes;
}

Outcome write_cache_notes(const std::string& directory, const CacheNotes& notes) {
  QJsonArray runs;
  for (const RunNote& run : notes.runs)
    runs.append(QJsonObject{{"first", run.first},
                            {"version", text(run.version)},
                            {"seconds", run.seconds},
                            {"substeps", run.substeps}});
  QJsonObject all{{"about", "The runs that made these frames, by their first frames."},
                  {"runs", runs}};
  if (notes.origin)
    all["origin"] =
        QJsonObject{{"cache", text(notes.origin->name)}, {"frame", notes.origin->frame}};
  return write_whole(notes_file(directory), QJsonDocument(all).toJson().toStdString(), Sync::kNone);
}

}  // namespace nbx
