// Map bundles: a project's text and pictures in one container.
//
//   <bundle><file path = "project" id = "9F0C…">PG9iamVjdD4…</file>…</bundle>
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/drawing.h"
#include "platform/zip.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.h"

namespace System::Beacon::Fencing {

using Canvas::IBitmap;
using Canvas::IBundle;
using Canvas::ICanvas;

/// Files by path and id. A bundle begins in memory; `SetWorkingDirectory` and `SetWorkingFile` put
/// a directory or an archive behind it instead of what it held, and what is added in memory later
/// is found before what lies there. In an archive with a table of ids ("MapId.txt") entries are
/// named by id; without one, each entry's name is both path and id.
///
/// Paths are 1 to 4096 bytes of UTF-8 without control characters, and are never opened but by
/// `AddFile`. Ids that are read are 1 to 64 letters, digits, '-' or '_', and only plain files of
/// the directory are opened, no links: nothing leads outside of it. What cannot be read, or is more
/// than the bounds, raises `EFileError` and changes nothing. One thread at a time.
class TBundle : public TInterfacedObject, public virtual IBundle {
 public:
  /// Without a canvas there are no images.
  explicit TBundle(TRef<ICanvas> ACanvas) : FCanvas(std::move(ACanvas)) {}

  /// The bound, in bytes, of all files in memory, of an archive packed and unpacked, and of each
  /// file of a directory.
  void SetMaxSize(std::size_t ASize) { FMaxSize = ASize; }
  /// Images with more pixels are not made; above `MaxPicturePixels` it has no effect.
  void SetMaxPicturePixels(std::size_t ACount);

  void SetWorkingDirectory(const std::string& APath) override;
  void SetWorkingFile(const std::string& AFile) override;
  std::string GetIdMapFilePath() const override;
  /// Nothing without a working directory.
  void GenerateTableWithNewPath(const std::string& APath, const std::string& AnId) override;

  void AddFile(const std::string& AFilePath, std::string& AnId, bool AReuse) override;
  void AddString(const std::string& APath,
                 const std::string& AText,
                 std::string& AnId,
                 bool AReuse) override;
  /// Raises `EConvertError` for a text that is no Base64.
  void AddFileWithEncode64(const std::string& APath,
                           const std::string& AnId,
                           const std::string& ABase64) override;

  bool ContainsFileWithId(const std::string& AnId) const override;
  bool ContainsFileWithPath(const std::string& APath) const override;
  std::string GetFileIdWithPath(const std::string& APath) const override;
  std::string GetFilePathWithId(const std::string& AnId) const override;
  /// Every path, in the order of the alphabet.
  std::vector<std::string> GetPaths() const;

  /// The bytes of a file of any kind.
  std::string GetStringForKey(const std::string& APath) override;
  std::string GetBase64FromFileId(const std::string& AnId) override;
  std::string GetBase64FromFilePath(const std::string& APath) override;
  /// Empty also for a file that cannot be read or is no picture, which is then remembered until
  /// another content is put in its place.
  TRef<IBitmap> GetImageForPath(const std::string& APath) override;
  std::string GetPathForImage(const IBitmap* ABitmap) const override;

  /// In the order of paths. Ids that could not be read again, which come from an archive without a
  /// table, are replaced by new ones.
  std::string SerializeToXML() override;
  // What is read is added to what the bundle holds. Beside `EXMLError` these raise `EFileError` for
  // wrong names or too much content and `EConvertError` for wrong Base64, each with its place.
  bool UnserializeFromXML(const std::string& AnXML) override;
  bool UnserializeFromXMLFile(const std::string& AFile) override;
  bool UnserializeFromXMLNode(const TRef<IXMLNode>& ANode) override;
  void Update() override {}

  /// Writes all files and their table as an archive, which is replaced as a whole.
  void SaveToArchive(const std::string& AFile);
  /// Writes them into a directory that is new or empty.
  void SaveToDirectory(const std::string& APath);

 private:
  struct TNewFile {
    std::string Path;
    std::string Id;
    std::string Bytes;
  };

  using TContents = std::map<std::string, std::string>;

  void Register(const std::string& APath, const std::string& AnId);
  void StoreInMemory(std::vector<TNewFile> AFiles);
  void StoreInMemory(TNewFile AFile);
  void StoreInDirectory(const TNewFile& AFile);
  std::string GetTableWith(const std::string& APath, const std::string& AnId) const;
  /// Every file by its id, and the table by its name; the place is for messages.
  TContents GetContents(const std::string& APlace);
  void DropContent(const std::string& AnId);
  void Clear();
  void CheckRoomFor(const std::vector<TNewFile>& AFiles) const;
  std::string IdFor(const std::string& APath) const;
  /// The content, which lies in memory or is read into `ASpace`; empty for an id that is unknown.
  std::string_view GetContent(const std::string& AnId, std::string& ASpace) const;
  TRef<IBitmap> LoadImage(const std::string& APath, const std::string& AnId) const;
  static TNewFile ReadFileElement(const TRef<IXMLNode>& ANode);

  std::string FWorkingPath;
  std::unique_ptr<TZipReader> FZipFile;
  bool FIsDirectory = false;         // a directory lies behind
  bool FIsReadOnly = false;          // an archive lies behind
  bool FContainsMemoryFiles = true;  // what is added goes to memory
  TRef<ICanvas> FCanvas;
  std::map<std::string, std::string> FPathToId;
  std::map<std::string, std::string> FIdToPath;
  std::map<std::string, TRef<IBitmap>> FLoadedImages;  // by id; empty: none
  std::map<std::string, std::string> FStreamFiles;     // contents by id
  std::size_t FStreamSize = 0;                         // of all contents, in bytes
  std::size_t FMaxSize = MaxZipSize;
  std::size_t FMaxPicturePixels = MaxPicturePixels;
};

TRef<IBundle> CreateBundleForCanvas(const TRef<ICanvas>& ACanvas);

/// A new random id: 32 hexadecimal digits.
std::string GenerateUUId();

}  // namespace System::Beacon::Fencing
