#include "map/project_builder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <utility>

#include "map/messages.h"
#include "persistence/System.Beacon.Fencing.Serializer.h"
#include "persistence/bundle_names.h"
#include "platform/base64.h"
#include "platform/drawing.h"
#include "platform/errors.h"
#include "platform/files.h"

namespace System::Beacon::Fencing::Scene::Beacons {
namespace {

void RequireFinite(const std::string& AName, std::initializer_list<float> ANumbers) {
  for (const float Number : ANumbers)
    if (!std::isfinite(Number)) throw EGeneralError(fmt::format(Messages::SNotFinite, AName));
}

TGUID ParseUUID(std::string_view AText) {
  return StringToGUID(AText.starts_with('{') ? std::string(AText) : fmt::format("{{{}}}", AText));
}

template <class TNodeClass>
TRef<TNodeClass> MakeNamed(const std::string& AName) {
  TRef<TNodeClass> Result = New<TNodeClass>();
  if (!AName.empty()) Result->SetName(AName);
  return Result;
}

/// Names that bundles keep for themselves.
bool IsReserved(const std::string& AName) {
  return AName == SceneEntry || AName == IdTableName;
}

/// The name, or one with a number before its ending, under which nothing but these bytes is kept.
std::string FindName(TBundle& ABundle, const std::string& AName, std::string_view ABytes) {
  const auto IsFree = [&](const std::string& ATried) {
    return !IsReserved(ATried) &&
           (!ABundle.ContainsFileWithPath(ATried) || ABundle.GetStringForKey(ATried) == ABytes);
  };
  const std::size_t Ending = std::min(AName.rfind('.'), AName.size());
  std::string Result = AName;
  for (int Number = 2; !IsFree(Result); ++Number)
    Result = fmt::format("{}-{}{}", AName.substr(0, Ending), Number, AName.substr(Ending));
  return Result;
}

}  // namespace

// ---------------------------------------------------------------- TMapBuilder

TMapBuilder::TMapBuilder(TRef<TBundle> ABundle,
                         const std::string& AName,
                         float AWidth,
                         float AHeight)
    : FBundle(std::move(ABundle)), FMap(MakeNamed<TMap>(AName)) {
  RequireFinite(AName, {AWidth, AHeight});
  if (AWidth <= 0.0F || AHeight <= 0.0F)
    throw EGeneralError(fmt::format(Messages::SMapSize, AName, AWidth, AHeight));
  FMap->SetRect({0.0F, 0.0F, AWidth, AHeight});
  FMap->SetMeasureUnits(TMeasureUnits::Meters);
  FMap->AddChild(MakeNamed<TZonesLayer>("Zones"));
  FMap->AddChild(MakeNamed<TPathsLayer>("Paths"));
  FMap->AddChild(MakeNamed<TBeaconsLayer>("Beacons"));
}

template <class TLayerClass>
TRef<INode> TMapBuilder::GetLayer() const {
  for (const TRef<INode>& Child : FMap->GetChildren())
    if (dynamic_cast<TLayerClass*>(Child.Get())) return Child;
  return FMap;
}

TMapBuilder& TMapBuilder::SetPicture(const std::string& AFileName) {
  return SetPicture(std::filesystem::path(AFileName).filename().string(),
                    ReadWholeFile(AFileName, MaxPictureFileSize));
}

TMapBuilder& TMapBuilder::SetPicture(const std::string& AName, std::string_view ABytes) {
  ReadPictureSize(ABytes, AName);
  const std::string Name = FindName(*FBundle, AName, ABytes);
  if (!FBundle->ContainsFileWithPath(Name))
    FBundle->AddFileWithEncode64(Name, GenerateUUId(), EncodeBase64(ABytes));
  FMap->SetBitmapPath(Name);
  return *this;
}

TRef<TBeacon> TMapBuilder::AddBeacon(const std::string& AName, TPointF AnAt) {
  RequireFinite(AName, {AnAt.X, AnAt.Y});
  TRef<TBeacon> Result = MakeNamed<TBeacon>(AName);
  Result->SetDisplacement(AnAt);
  return Result;
}

TRef<TBeacon> TMapBuilder::AddBeacon(
    const std::string& AName, TPointF AnAt, std::string_view AUUID, int AMajor, int AMinor) {
  TRef<TBeacon> Result = AddBeacon(AName, AnAt);
  Result->SetGUID(ParseUUID(AUUID));
  Result->SetMajor(AMajor);
  Result->SetMinor(AMinor);
  GetLayer<TBeaconsLayer>()->AddChild(Result);
  return Result;
}

TRef<TBeacon> TMapBuilder::AddEddystone(const std::string& AName,
                                        TPointF AnAt,
                                        const std::string& ANamespace,
                                        const std::string& AnInstance) {
  TRef<TBeacon> Result = AddBeacon(AName, AnAt);
  Result->SetKindofBeacon(TKindofBeacon::Eddystone);
  Result->SetEddyNamespace(ANamespace);
  Result->SetEddyInstance(AnInstance);
  GetLayer<TBeaconsLayer>()->AddChild(Result);
  return Result;
}

TRef<TZone> TMapBuilder::AddZone(const std::string& AName, const TRectF& ARect) {
  RequireFinite(AName, {ARect.Left, ARect.Top, ARect.Right, ARect.Bottom});
  TRef<TZone> Result = MakeNamed<TZone>(AName);
  Result->SetRect({0.0F, 0.0F, ARect.GetWidth(), ARect.GetHeight()});
  Result->SetDisplacement({ARect.Left, ARect.Top});
  GetLayer<TZonesLayer>()->AddChild(Result);
  return Result;
}

TRef<TCircularZone> TMapBuilder::AddCircularZone(const std::string& AName,
                                                 TPointF ACentre,
                                                 float ARadius) {
  RequireFinite(AName, {ACentre.X, ACentre.Y, ARadius});
  TRef<TCircularZone> Result = MakeNamed<TCircularZone>(AName);
  Result->SetRect({-ARadius, -ARadius, ARadius, ARadius});
  Result->SetDisplacement(ACentre);
  GetLayer<TZonesLayer>()->AddChild(Result);
  return Result;
}

TRef<TPathZone> TMapBuilder::AddPathZone(const std::string& AName,
                                         std::span<const TPointF> ACorners) {
  TRef<TPathZone> Result = MakeNamed<TPathZone>(AName);
  for (const TPointF& Corner : ACorners) {
    RequireFinite(AName, {Corner.X, Corner.Y});
    Result->AddControlPoint(Corner);
  }
  GetLayer<TZonesLayer>()->AddChild(Result);
  return Result;
}

TRef<TMapPath> TMapBuilder::AddPath(const std::string& AName,
                                    std::span<const TNamedPoint> APoints) {
  TRef<TMapPath> Result = MakeNamed<TMapPath>(AName);
  for (const TNamedPoint& Point : APoints)
    AddBranch(*Result, Result->GetControlPointCount() - 1, Point);
  GetLayer<TPathsLayer>()->AddChild(Result);
  return Result;
}

TRef<TMapPathNode> TMapBuilder::AddBranch(TMapPath& APath,
                                          std::int32_t AFrom,
                                          const TNamedPoint& APoint) {
  RequireFinite(APoint.Name, {APoint.Position.X, APoint.Position.Y});
  APath.AddControlPoint(APoint.Position);
  const std::int32_t Index = APath.GetControlPointCount() - 1;
  TRef<TMapPathNode> Result = GetNode(APath, Index);
  if (!APoint.Name.empty()) Result->SetName(APoint.Name);
  if (AFrom >= 0) APath.ConnectControlPoints(AFrom, Index);
  return Result;
}

TRef<TMapPathNode> TMapBuilder::GetNode(TMapPath& APath, std::int32_t AIndex) {
  return TRef<TMapPathNode>(dynamic_cast<TMapPathNode*>(APath.GetControlPointNode(AIndex).Get()));
}

// ---------------------------------------------------------------- TProjectBuilder

TProjectBuilder::TProjectBuilder(const std::string& AName)
    : FScene(MakeNamed<TScene>(AName)), FBundle(New<TBundle>(nullptr)) {}

TMapBuilder TProjectBuilder::AddMap(const std::string& AName, float AWidth, float AHeight) {
  TMapBuilder Result(FBundle, AName, AWidth, AHeight);
  FScene->AddChild(Result.GetMap());
  if (FConnections) FScene->MoveChildToBack(FScene->GetChildIndex(FConnections.Get()));
  return Result;
}

void TProjectBuilder::Connect(const std::string& AFrom, const std::string& ATo) {
  if (!FConnections) {
    FConnections = MakeNamed<TConnectingNodes>("Connections");
    FScene->AddChild(FConnections);
  }
  FConnections->AddConnection(AFrom, ATo);
}

TRef<TBundle> TProjectBuilder::MakeBundle() const {
  std::string Id;
  FBundle->AddString(std::string(SceneEntry), SerializeToXML(*FScene), Id, false);
  return FBundle;
}

void TProjectBuilder::Save(const std::string& AFileName) const {
  const TRef<TBundle> Bundle = MakeBundle();
  if (std::filesystem::path(AFileName).extension() == ".zip")
    Bundle->SaveToArchive(AFileName);
  else
    ReplaceFile(AFileName, Bundle->SerializeToXML());
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
