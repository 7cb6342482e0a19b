#include "decoders/ogg_handle.h"

#include <tremor/ivorbiscodec.h>

#include <limits>
#include <vector>

#include "playback/byte_source.h"
#include "playback/locked_file.h"

namespace decoders {
namespace {

std::size_t ReadSource(void* destination, std::size_t size, std::size_t count, void* datasource) {
  if (size == 0) return 0;
  auto& source = *static_cast<playback::ByteSource*>(datasource);
  const std::size_t wanted = size * count;
  const auto asked =
      static_cast<std::uint32_t>(std::min<std::size_t>(wanted, std::numeric_limits<std::uint32_t>::max()));
  std::uint32_t got = 0;
  if (source.Read(destination, asked, &got) == 0) return 0;
  return got / size;
}

int SeekSource(void* datasource, ogg_int64_t offset, int origin) {
  auto& source = *static_cast<playback::ByteSource*>(datasource);
  return source.Seek(offset, origin) == playback::ByteSource::kSeekFailed ? -1 : 0;
}

// The decoder closes the source it opened; the library never does.
int KeepSource(void* /*datasource*/) {
  return 0;
}

long TellSource(void* datasource) {
  auto& source = *static_cast<playback::ByteSource*>(datasource);
  const std::int64_t position = source.Seek(0, playback::ByteSource::kFromCurrent);
  if (position == playback::ByteSource::kSeekFailed || position > std::numeric_limits<long>::max()) return -1;
  return static_cast<long>(position);
}

}  // namespace

ov_callbacks ByteSourceCallbacks() {
  return {ReadSource, SeekSource, KeepSource, TellSource};
}

std::unique_ptr<OggHandle> OggHandle::Open(void* datasource, const ov_callbacks& callbacks) {
  std::unique_ptr<OggHandle> handle(new OggHandle);
  // On failure the library has cleared its record itself.
  if (ov_open_callbacks(datasource, &handle->file, nullptr, 0, callbacks) != 0) return nullptr;
  handle->opened = true;
  handle->NoteLink();
  return handle;
}

std::unique_ptr<OggHandle> OggHandle::OpenSource(playback::ByteSource& source) {
  return Open(&source, ByteSourceCallbacks());
}

std::unique_ptr<OggHandle> OggHandle::OpenPath(const std::string& path) {
  if (path.empty()) return nullptr;
  auto file = std::make_unique<playback::LockedFile>();
  if (file->Open(path.c_str()) == 0) return nullptr;
  std::unique_ptr<OggHandle> handle = OpenSource(*file);
  if (handle) handle->ownFile = std::move(file);
  return handle;
}

OggHandle::~OggHandle() {
  if (opened) ov_clear(&file);
}

OggReadResult OggHandle::ReadPcm(void* buffer, std::uint32_t size, std::uint32_t& bytes) {
  bytes = 0;
  if (size < kOggMinimumBlock) return OggReadResult::kRefused;
  int link = 0;
  const long result = ov_read(&file, static_cast<char*>(buffer), static_cast<int>(size), &link);
  if (result == 0) return OggReadResult::kEnd;
  if (result > 0) {
    bytes = static_cast<std::uint32_t>(result);
    return OggReadResult::kData;
  }
  return result == OV_HOLE ? OggReadResult::kHole : OggReadResult::kError;
}

bool OggHandle::SeekPage(std::int64_t sample) {
  return ov_pcm_seek_page(&file, sample) == 0;
}

std::int64_t OggHandle::Tell() {
  return ov_pcm_tell(&file);
}

std::int64_t OggHandle::Total() {
  return ov_pcm_total(&file, -1);
}

bool OggHandle::Info(OggStreamInfo& info) {
  const vorbis_info* vorbis = ov_info(&file, -1);
  if (vorbis == nullptr || vorbis->rate <= 0 || vorbis->channels <= 0) return false;
  info.sampleRate = static_cast<std::uint32_t>(vorbis->rate);
  info.channels = static_cast<std::uint32_t>(vorbis->channels);
  info.bitrate = vorbis->bitrate_nominal > 0 ? static_cast<std::uint32_t>(vorbis->bitrate_nominal / 1000) : 0;
  return true;
}

OggTags OggHandle::ReadTags() {
  NoteLink();
  std::vector<std::string_view> comments;
  if (const vorbis_comment* vc = ov_comment(&file, -1); vc != nullptr && vc->comments > 0) {
    for (int i = 0; i < vc->comments; ++i) {
      if (vc->user_comments[i] == nullptr) continue;
      const int length = vc->comment_lengths != nullptr ? vc->comment_lengths[i] : 0;
      comments.emplace_back(vc->user_comments[i], length > 0 ? static_cast<std::size_t>(length) : 0);
    }
  }
  return ReadOggTags(comments);
}

bool OggHandle::TagsChanged() {
  return file.current_link != seenLink || file.current_serialno != seenSerial;
}

void OggHandle::NoteLink() {
  seenLink = file.current_link;
  seenSerial = file.current_serialno;
}

}  // namespace decoders
