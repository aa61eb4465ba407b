// zimg. It works on planes; libyuv, where it is there too, takes packed rows apart and puts them
// together, row by row in zimg's callbacks. libyuv has nothing for packed 4:1:1: a plain loop.

#include <zimg.h>

#include <array>
#include <memory>
#include <new>

#include "Peers.h"
#include "PixelFormats.h"

#if KORVEX2_BENCH_LIBYUV
#include <libyuv.h>
#endif

namespace Korvex2::Bench {
namespace {

using Byte = std::uint8_t;

constexpr std::size_t kAlignment = 64;

/// Pixels from `left` to `right` of a packed row and of rows of planes, in the order of zimg: R G B
/// or Y U V.
struct Span {
  std::ptrdiff_t left;
  std::ptrdiff_t right;
  int Width() const { return static_cast<int>(right - left); }
};

using Unpack = void (*)(const Byte* packed, const std::array<Byte*, 3>& planes, Span span);
using Pack = void (*)(const std::array<const Byte*, 3>& planes, Byte* packed, Span span);

/// How zimg sees one of our formats.
struct View {
  PixelFormat format;
  zimg_color_family_e family;
  zimg_pixel_type_e type;
  unsigned chromaShift;  ///< of 4:1:1: 2
  Unpack unpack;         ///< null where the frame is a plane already
  Pack pack;
};

#if KORVEX2_BENCH_LIBYUV

// The planes' places in the order in which a packed pixel holds them.
template <int kFirst, int kSecond, int kThird>
void Unpack3(const Byte* packed, const std::array<Byte*, 3>& p, Span s) {
  const int width = s.Width();
  libyuv::SplitRGBPlane(packed + 3 * s.left, 0, p[kFirst] + s.left, 0, p[kSecond] + s.left, 0,
                        p[kThird] + s.left, 0, width, 1);
}

template <int kFirst, int kSecond, int kThird>
void Pack3(const std::array<const Byte*, 3>& p, Byte* packed, Span s) {
  const int width = s.Width();
  libyuv::MergeRGBPlane(p[kFirst] + s.left, 0, p[kSecond] + s.left, 0, p[kThird] + s.left, 0,
                        packed + 3 * s.left, 0, width, 1);
}

// libyuv's "red" is the third byte here.
template <int kFirst, int kSecond, int kThird>
void Unpack4(const Byte* packed, const std::array<Byte*, 3>& p, Span s) {
  libyuv::SplitARGBPlane(packed + 4 * s.left, 0, p[kThird] + s.left, 0, p[kSecond] + s.left, 0,
                         p[kFirst] + s.left, 0, nullptr, 0, s.Width(), 1);
}

template <int kFirst, int kSecond, int kThird>
void Pack4(const std::array<const Byte*, 3>& p, Byte* packed, Span s) {
  libyuv::MergeARGBPlane(p[kThird] + s.left, 0, p[kSecond] + s.left, 0, p[kFirst] + s.left, 0,
                         nullptr, 0, packed + 4 * s.left, 0, s.Width(), 1);
}

void UnpackUyvy(const Byte* packed, const std::array<Byte*, 3>& p, Span s) {
  libyuv::UYVYToI422(packed + 2 * s.left, 0, p[0] + s.left, 0, p[1] + s.left / 2, 0,
                     p[2] + s.left / 2, 0, s.Width(), 1);
}

void PackUyvy(const std::array<const Byte*, 3>& p, Byte* packed, Span s) {
  libyuv::I422ToUYVY(p[0] + s.left, 0, p[1] + s.left / 2, 0, p[2] + s.left / 2, 0,
                     packed + 2 * s.left, 0, s.Width(), 1);
}

void Unpack411(const Byte* packed, const std::array<Byte*, 3>& p, Span s) {
  for (std::ptrdiff_t x = s.left; x < s.right; x += 4) {
    const Byte* group = packed + x / 4 * 6;
    p[1][x / 4] = group[0];
    p[0][x] = group[1];
    p[0][x + 1] = group[2];
    p[2][x / 4] = group[3];
    p[0][x + 2] = group[4];
    p[0][x + 3] = group[5];
  }
}

void Pack411(const std::array<const Byte*, 3>& p, Byte* packed, Span s) {
  for (std::ptrdiff_t x = s.left; x < s.right; x += 4) {
    Byte* group = packed + x / 4 * 6;
    group[0] = p[1][x / 4];
    group[1] = p[0][x];
    group[2] = p[0][x + 1];
    group[3] = p[2][x / 4];
    group[4] = p[0][x + 2];
    group[5] = p[0][x + 3];
  }
}

#endif

// clang-format off
constexpr View kViews[] = {
    {PIXEL_FORMAT_MONO8,   ZIMG_COLOR_GREY, ZIMG_PIXEL_BYTE, 0, nullptr,          nullptr},
    {PIXEL_FORMAT_MONO16,  ZIMG_COLOR_GREY, ZIMG_PIXEL_WORD, 0, nullptr,          nullptr},
#if KORVEX2_BENCH_LIBYUV
    {PIXEL_FORMAT_RGB8,    ZIMG_COLOR_RGB,  ZIMG_PIXEL_BYTE, 0, Unpack3<0, 1, 2>, Pack3<0, 1, 2>},
    {PIXEL_FORMAT_BGR,     ZIMG_COLOR_RGB,  ZIMG_PIXEL_BYTE, 0, Unpack3<2, 1, 0>, Pack3<2, 1, 0>},
    {PIXEL_FORMAT_RGBU,    ZIMG_COLOR_RGB,  ZIMG_PIXEL_BYTE, 0, Unpack4<0, 1, 2>, Pack4<0, 1, 2>},
    {PIXEL_FORMAT_BGRU,    ZIMG_COLOR_RGB,  ZIMG_PIXEL_BYTE, 0, Unpack4<2, 1, 0>, Pack4<2, 1, 0>},
    {PIXEL_FORMAT_411YUV8, ZIMG_COLOR_YUV,  ZIMG_PIXEL_BYTE, 2, Unpack411,        Pack411},
    {PIXEL_FORMAT_422YUV8, ZIMG_COLOR_YUV,  ZIMG_PIXEL_BYTE, 1, UnpackUyvy,       PackUyvy},
    {PIXEL_FORMAT_444YUV8, ZIMG_COLOR_YUV,  ZIMG_PIXEL_BYTE, 0, Unpack3<1, 0, 2>, Pack3<1, 0, 2>},
#endif
};
// clang-format on

const View* FindView(PixelFormat format) {
  for (const View& view : kViews) {
    if (view.format == format) return &view;
  }
  return nullptr;
}

zimg_image_format Describe(const View& view, FrameSize size) {
  zimg_image_format format;
  zimg_image_format_default(&format, ZIMG_API_VERSION);
  format.width = size.cols;
  format.height = size.rows;
  format.pixel_type = view.type;
  format.depth = view.type == ZIMG_PIXEL_WORD ? 16 : 8;
  format.subsample_w = view.chromaShift;
  format.color_family = view.family;
  format.matrix_coefficients =
      view.family == ZIMG_COLOR_RGB ? ZIMG_MATRIX_RGB : ZIMG_MATRIX_ST170_M;
  format.pixel_range = ZIMG_RANGE_FULL;
  format.chroma_location = ZIMG_CHROMA_CENTER;
  return format;
}

struct AlignedDelete {
  void operator()(Byte* memory) const { ::operator delete (memory, std::align_val_t{kAlignment}); }
};
using Memory = std::unique_ptr<Byte, AlignedDelete>;

Memory Allocate(std::size_t bytes) {
  return Memory(static_cast<Byte*>(::operator new (bytes, std::align_val_t{kAlignment})));
}

/// The rows of a frame's planes, the whole frame where it is a plane itself.
class Side {
 public:
  Side(const View& view, FrameSize size, unsigned bufferedRows)
      : m_view(view),
        m_rowBytes(static_cast<std::size_t>(PackedSize(*FindPixelFormat(view.format), size.cols))) {
    const bool direct = view.pack == nullptr;
    m_mask = direct ? ZIMG_BUFFER_MAX : zimg_select_buffer_mask(bufferedRows);
    if (direct) return;
    const std::size_t rows = m_mask == ZIMG_BUFFER_MAX ? size.rows : m_mask + 1;
    m_stride = (size.cols + kAlignment - 1) / kAlignment * kAlignment;
    for (Memory& plane : m_planes) plane = Allocate(m_stride * rows);
  }

  void Bind(const Byte* frame) { m_frame = const_cast<Byte*>(frame); }

  template <typename Buffer>
  Buffer Describe() const {
    Buffer buffer{};
    buffer.version = ZIMG_API_VERSION;
    for (int i = 0; i < 3; ++i) {
      const bool direct = m_view.pack == nullptr;
      buffer.plane[i].data = direct ? m_frame : m_planes[static_cast<std::size_t>(i)].get();
      buffer.plane[i].stride = static_cast<std::ptrdiff_t>(direct ? m_rowBytes : m_stride);
      buffer.plane[i].mask = m_mask;
    }
    return buffer;
  }

  zimg_filter_graph_callback Unpacks() const {
    return m_view.unpack == nullptr ? nullptr : &Side::UnpackRow;
  }
  zimg_filter_graph_callback Packs() const {
    return m_view.pack == nullptr ? nullptr : &Side::PackRow;
  }

 private:
  template <typename Pointer>
  std::array<Pointer, 3> Row(unsigned row) const {
    const std::size_t offset = m_stride * (row & m_mask);
    return {m_planes[0].get() + offset, m_planes[1].get() + offset, m_planes[2].get() + offset};
  }

  static int UnpackRow(void* side, unsigned row, unsigned left, unsigned right) {
    const Side& self = *static_cast<Side*>(side);
    self.m_view.unpack(self.m_frame + row * self.m_rowBytes, self.Row<Byte*>(row),
                       {std::ptrdiff_t{left}, std::ptrdiff_t{right}});
    return 0;
  }

  static int PackRow(void* side, unsigned row, unsigned left, unsigned right) {
    const Side& self = *static_cast<Side*>(side);
    self.m_view.pack(self.Row<const Byte*>(row), self.m_frame + row * self.m_rowBytes,
                     {std::ptrdiff_t{left}, std::ptrdiff_t{right}});
    return 0;
  }

  const View& m_view;
  std::size_t m_rowBytes;
  std::size_t m_stride = 0;
  unsigned m_mask = 0;
  std::array<Memory, 3> m_planes;
  Byte* m_frame = nullptr;
};

using Graph = std::shared_ptr<zimg_filter_graph>;

Graph BuildGraph(const View& source, const View& target, FrameSize size) {
  zimg_graph_builder_params params;
  zimg_graph_builder_params_default(&params, ZIMG_API_VERSION);
  params.cpu_type = ZIMG_CPU_AUTO_64B;
  const bool widens = target.chromaShift < source.chromaShift;
  params.resample_filter_uv = widens ? ZIMG_RESIZE_POINT : ZIMG_RESIZE_BILINEAR;
  const zimg_image_format from = Describe(source, size);
  const zimg_image_format to = Describe(target, size);
  return Graph(zimg_filter_graph_build(&from, &to, &params), zimg_filter_graph_free);
}

bool IsAligned(const View& view, FrameSize size) {
  return view.pack != nullptr ||
         PackedSize(*FindPixelFormat(view.format), size.cols) % kAlignment == 0;
}

Call MakeCall(const View& source, const View& target, FrameSize size) {
  const Graph graph = BuildGraph(source, target, size);
  if (graph == nullptr || !IsAligned(source, size) || !IsAligned(target, size)) return nullptr;
  unsigned inputRows = 0;
  unsigned outputRows = 0;
  std::size_t bytes = 0;
  zimg_filter_graph_get_input_buffering(graph.get(), &inputRows);
  zimg_filter_graph_get_output_buffering(graph.get(), &outputRows);
  zimg_filter_graph_get_tmp_size(graph.get(), &bytes);
  const auto in = std::make_shared<Side>(source, size, inputRows);
  const auto out = std::make_shared<Side>(target, size, outputRows);
  const std::shared_ptr<Byte> temporary = Allocate(bytes + kAlignment);
  return [=](const Byte* src, Byte* dst) {
    in->Bind(src);
    out->Bind(dst);
    const auto from = in->Describe<zimg_image_buffer_const>();
    const auto to = out->Describe<zimg_image_buffer>();
    zimg_filter_graph_process(graph.get(), &from, &to, temporary.get(), in->Unpacks(), in.get(),
                              out->Packs(), out.get());
  };
}

std::optional<Peer> Find(PixelFormat source, PixelFormat target) {
  const View* from = FindView(source);
  const View* to = FindView(target);
  // Orders of channels are the same to zimg, and it makes no colour of grey.
  const bool does =
      from != nullptr && to != nullptr &&
      (from->family != to->family || from->family == ZIMG_COLOR_YUV || from->type != to->type) &&
      (from->family != ZIMG_COLOR_GREY || to->family == ZIMG_COLOR_GREY);
  if (!does) return std::nullopt;
  const bool packed = from->pack != nullptr || to->pack != nullptr;
  return Peer{"zimg",
              packed ? "zimg_filter_graph_process, packed by libyuv" : "zimg_filter_graph_process",
              [from, to](FrameSize size) { return MakeCall(*from, *to, size); }};
}

}  // namespace

PeerLibrary Zimg() {
  unsigned major = 0;
  unsigned minor = 0;
  unsigned patch = 0;
  zimg_get_version_info(&major, &minor, &patch);
  std::string version = std::to_string(major);
  version.append(".").append(std::to_string(minor)).append(".").append(std::to_string(patch));
  return {"zimg", version, Find};
}

}  // namespace Korvex2::Bench
