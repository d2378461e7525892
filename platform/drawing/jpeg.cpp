#include <fmt/format.h>

#include <bit>
#include <csetjmp>
#include <cstdio>

#include "platform/drawing/codecs.h"
#include "platform/messages.h"
// These need what stands above.
#include <jerror.h>
#include <jpeglib.h>

namespace System::Drawing {
namespace {

// A small file can hold any number of scans, each of which costs the time of a whole picture.
constexpr int MaxScans = 64;

// The library leaves through a long jump when it fails, so that nothing with a destructor may be
// alive in the functions that it jumps out of.
struct TJpegErrors {
  jpeg_error_mgr Manager;
  std::jmp_buf Exit;
  char Text[JMSG_LENGTH_MAX];
};

void Leave(j_common_ptr AJpeg) {
  auto* const Errors = reinterpret_cast<TJpegErrors*>(AJpeg->err);
  AJpeg->err->format_message(AJpeg, Errors->Text);
  std::longjmp(Errors->Exit, 1);
}

// What does not touch the picture is passed over; any other warning means that it is damaged.
void JudgeMessage(j_common_ptr AJpeg, int ALevel) {
  const int Code = AJpeg->err->msg_code;
  const bool IsHarmless = ALevel >= 0 || Code == JWRN_EXTRANEOUS_DATA || Code == JWRN_JFIF_MAJOR ||
                          Code == JWRN_ADOBE_XFORM;
  if (!IsHarmless) Leave(AJpeg);
}

void LimitScans(j_common_ptr AJpeg) {
  const auto* const Decoder = reinterpret_cast<j_decompress_ptr>(AJpeg);
  if (Decoder->input_scan_number <= MaxScans) return;
  auto* const Errors = reinterpret_cast<TJpegErrors*>(AJpeg->err);
  std::snprintf(Errors->Text, sizeof Errors->Text, "more than %d scans", MaxScans);
  std::longjmp(Errors->Exit, 1);
}

class TJpegReader {
 public:
  TJpegReader(std::string_view ABytes, const std::string& AName) : FName(AName) {
    FDecoder.err = jpeg_std_error(&FErrors.Manager);
    FErrors.Manager.error_exit = &Leave;
    FErrors.Manager.emit_message = &JudgeMessage;
    FProgress.progress_monitor = &LimitScans;
    if (!Open(ABytes)) Raise();
  }
  ~TJpegReader() { jpeg_destroy_decompress(&FDecoder); }
  TJpegReader(const TJpegReader&) = delete;
  TJpegReader& operator=(const TJpegReader&) = delete;

  TPictureHeader GetHeader() const {
    return {
        .Size = {static_cast<int>(FDecoder.image_width), static_cast<int>(FDecoder.image_height)}};
  }

  void Read(std::span<std::uint32_t> APixels) {
    if (FDecoder.num_components == 4) throw EFileError(fmt::format(Messages::SPrintColours, FName));
    if (!ReadRows(APixels.data())) Raise();
  }

 private:
  bool Open(std::string_view ABytes) {
    if (setjmp(FErrors.Exit)) return false;
    jpeg_create_decompress(&FDecoder);
    FDecoder.progress = &FProgress;
    jpeg_mem_src(&FDecoder,
                 reinterpret_cast<const unsigned char*>(ABytes.data()),
                 static_cast<unsigned long>(ABytes.size()));
    jpeg_read_header(&FDecoder, TRUE);
    return true;
  }

  bool ReadRows(std::uint32_t* APixels) {
    if (setjmp(FErrors.Exit)) return false;
    FDecoder.out_color_space =
        std::endian::native == std::endian::little ? JCS_EXT_BGRA : JCS_EXT_ARGB;
    jpeg_start_decompress(&FDecoder);
    while (FDecoder.output_scanline < FDecoder.output_height) {
      auto* Row = reinterpret_cast<JSAMPLE*>(
          APixels + static_cast<std::size_t>(FDecoder.output_scanline) * FDecoder.output_width);
      jpeg_read_scanlines(&FDecoder, &Row, 1);
    }
    jpeg_finish_decompress(&FDecoder);
    return true;
  }

  [[noreturn]] void Raise() {
    jpeg_destroy_decompress(&FDecoder);
    RaiseDamaged(FName, "JPEG", FErrors.Text);
  }

  const std::string& FName;
  jpeg_decompress_struct FDecoder{};
  jpeg_progress_mgr FProgress{};
  TJpegErrors FErrors{};
};

}  // namespace

TPictureHeader ReadJpegHeader(std::string_view ABytes, const std::string& AName) {
  return TJpegReader(ABytes, AName).GetHeader();
}

void DecodeJpeg(std::string_view ABytes,
                const std::string& AName,
                std::span<std::uint32_t> APixels) {
  TJpegReader(ABytes, AName).Read(APixels);
}

}  // namespace System::Drawing
