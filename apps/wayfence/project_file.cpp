#include "apps/wayfence/project_file.h"

#include <fmt/format.h>

#include <array>
#include <filesystem>
#include <fstream>

#include "map/project_builder.h"
#include "platform/errors.h"
#include "platform/files.h"
#include "platform/xml.h"
#include "runtimepaint/project_extraction.h"
#include "runtimepaint/project_reader.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;

namespace {

void OpenDirectory(TBundle& ABundle, const std::string& APath) {
  ABundle.SetWorkingDirectory((std::filesystem::path(APath) / "").string());
  if (!std::filesystem::exists(ABundle.GetIdMapFilePath()))
    throw EFileError(
        fmt::format("{0}: this directory is no bundle: it has no table of files, MapId.txt; of an "
                    "unpacked one 'wayfence bundle create FILE.zip {0}/project PICTURE...' makes a "
                    "bundle again",
                    APath));
}

/// A document of a scene alone becomes a bundle that holds it.
void OpenText(TBundle& ABundle, const std::string& APath) {
  const std::string Text = ReadWholeFile(APath, MaxXMLSize);
  const TRef<IXMLDocument> Document = ParseXML(Text, APath);
  const std::string Root(Document->GetDocumentElement()->GetNodeName());
  std::string Id;
  if (SameName(Root, "object"))
    ABundle.AddString(std::string(Scene::Beacons::SceneEntry), Text, Id, false);
  else if (SameName(Root, "bundle"))
    ABundle.UnserializeFromXMLNode(Document->GetNode());
  else
    throw EFileError(
        fmt::format("{}: a project begins with <bundle> or <object>, not with <{}>", APath, Root));
}

bool IsArchive(const std::string& APath) {
  std::array<char, 2> First{};
  std::ifstream(APath, std::ios::binary).read(First.data(), First.size());
  return First == std::array{'P', 'K'};
}

}  // namespace

TRef<TBundle> OpenBundle(const std::string& APath) {
  TRef<TBundle> Result = New<TBundle>(Canvas::CreateWyxCanvas());
  if (std::filesystem::is_directory(APath))
    OpenDirectory(*Result, APath);
  else if (IsArchive(APath))
    Result->SetWorkingFile(APath);
  else
    OpenText(*Result, APath);
  return Result;
}

TProjectFile OpenProject(const std::string& APath) {
  TProjectFile Result{OpenBundle(APath), nullptr, APath};
  Result.Scene = ReadSceneOf(Result.Bundle, APath);
  return Result;
}

TFencingProject ExtractFrom(const TProjectFile& AFile) {
  try {
    return ExtractProject(*AFile.Scene);
  } catch (const EConvertError& Error) {
    throw EFileError(fmt::format("{}: {}", AFile.Name, Error.what()));
  }
}

}  // namespace Wayfence
