#include "apps/wayfence/map_frames.h"

#include <fmt/format.h>

#include "platform/errors.h"

namespace Wayfence {

using namespace System;
namespace fs = std::filesystem;

namespace {

constexpr std::string_view NameStart = "frame-", NameEnd = ".png";

bool IsFrame(std::string_view AName) {
  if (!AName.starts_with(NameStart) || !AName.ends_with(NameEnd)) return false;
  AName.remove_prefix(NameStart.size());
  AName.remove_suffix(NameEnd.size());
  return AName.size() >= 6 && AName[AName.size() - 2] == '.' &&
         AName.find_first_not_of("0123456789.") == std::string_view::npos;
}

}  // namespace

std::vector<std::string> FramesIn(const std::string& ADirectory) {
  std::vector<std::string> Result;
  if (!fs::exists(ADirectory)) return Result;
  if (!fs::is_directory(ADirectory))
    throw EFileError(
        fmt::format("{}: this is no folder, and pictures are to go there", ADirectory));
  for (const fs::directory_entry& Entry : fs::directory_iterator(ADirectory))
    if (IsFrame(Entry.path().filename().string())) Result.push_back(Entry.path().string());
  return Result;
}

TFrames::TFrames(Beacon::Fencing::TBeaconMapFencing& AComponent, const TMapArguments& AArguments)
    : FComponent(AComponent),
      FDirectory(AArguments.FrameDirectory),
      FInterval(AArguments.FrameInterval),
      FControl(static_cast<float>(AArguments.FrameSize.first),
               static_cast<float>(AArguments.FrameSize.second)) {
  fs::create_directories(FDirectory);
  for (const std::string& Frame : FramesIn(AArguments.FrameDirectory)) fs::remove(Frame);
  FComponent.SetPaintControl(&FControl);
  FComponent.SetRotation(0);  // fits the floor in
}

void TFrames::Draw(double ASeconds) {
  if (ASeconds < FNext) return;
  FNext = ASeconds + FInterval;
  FControl.SavePicture(
      (FDirectory / fmt::format("{}{:06.1f}{}", NameStart, ASeconds, NameEnd)).string());
}

}  // namespace Wayfence
