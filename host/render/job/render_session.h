// The BaseRender of the small host: a render as post effects see it.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "host/interface/command_data.h"
#include "host/render/job/render_job.h"
#include "host/render/trace/volume_query.h"

namespace host {

class RenderSession final : public BaseRender {
 public:
  /// All three must outlive the session.
  RenderSession(BaseDocument& document, const RenderJob& job, CommandContext& context)
      : document_(document), job_(job), context_(context), frame_(job.frames.front()) {}

  BaseDocument& GetDocument() const override { return document_; }
  std::int32_t GetWidth() const override { return job_.width; }
  std::int32_t GetHeight() const override { return job_.height; }
  std::int32_t GetThreadCount() const override { return job_.threads; }
  std::int32_t GetFrame() const override { return frame_; }
  std::int32_t GetFirstFrame() const override { return job_.frames.front(); }
  std::int32_t GetLastFrame() const override { return job_.frames.back(); }
  Vector GetCameraPosition() const override { return camera_position_; }
  bool IsNetworkClient() const override { return false; }
  VolumeData& GetVolumeData(std::int32_t thread) override { return queries_.at(thread); }
  void SetStatusText(const std::string& text) override;
  void SetProgress(double share) override;
  bool TestBreak() const override { return context_.Interrupts() >= 2; }
  void Refuse(Refusal kind, const std::string& why) override;
  OldFiles AskAboutOldFiles() override { return job_.old_files; }
  void ReportMissing(const std::string& what) override { missing_.push_back(what); }
  void Warning(const std::string& text) override { context_.Warning(text); }
  void Note(const std::string& text) override { context_.Note(text); }

  /// Starts a frame: creates the contexts and clears the list of missing data.
  void SetFrame(std::int32_t frame, const RenderScene& scene);
  const std::vector<std::string>& Missing() const { return missing_; }
  /// The exit code if an effect has refused (its reason has been printed), otherwise kDone.
  ExitCode Refused() const { return refused_; }

 private:
  BaseDocument& document_;
  const RenderJob& job_;
  CommandContext& context_;
  std::int32_t frame_;
  Vector camera_position_;
  std::vector<RayCounts> counts_;  ///< one per thread
  std::vector<VolumeQuery> queries_;
  std::vector<std::string> missing_;
  ExitCode refused_ = kDone;
  std::mutex mutex_;  ///< guards status_
  std::string status_;
};

}  // namespace host
