// The extension module korvex2._core: the converter on the bytes of arrays. What an array means,
// and which arguments make sense together, is decided in Python.

#include <Korvex2.h>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace py = pybind11;

namespace Korvex2::Python {
namespace {

// --- Failures

// What the library answered, on its way to korvex2.Error.
struct Failure {
  Error error;
};

void Require(const Error& error) {
  if (error != VORERROR_OK) {
    throw Failure{error};
  }
}

py::object ToException(const Error* error) {
  if (error == nullptr) {
    return py::none();
  }
  const py::object type = py::module_::import("korvex2._errors").attr("Error");
  return type(static_cast<int>(error->GetType()), error->GetMessage(),
              ToException(error->GetCause()));
}

void Translate(std::exception_ptr exception) {
  try {
    std::rethrow_exception(std::move(exception));
  } catch (const Failure& failure) {
    const py::object raised = ToException(&failure.error);
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(raised.ptr())), raised.ptr());
  }
}

// --- Conversion

struct Frame {
  unsigned int rows;
  unsigned int cols;
  PixelFormat format;
  BayerTileFormat tile;
  ColorProcessingAlgorithm method;
};

std::size_t FrameBytes(const Frame& frame) {
  return GroupedSize(*FindPixelFormat(frame.format), std::uint64_t{frame.rows} * frame.cols);
}

// What an Image of this shape asks of a buffer. Rows of packed pixels that end within a byte count
// it whole, and so may take more than the frame.
std::size_t StridedBytes(const Frame& frame) {
  return std::size_t{frame.rows} *
         PackedStride(frame.cols, FindPixelFormat(frame.format)->bitsPerPixel);
}

Error Shape(const Frame& frame, Image& image) {
  const unsigned int stride = PackedStride(frame.cols, FindPixelFormat(frame.format)->bitsPerPixel);
  return image.SetDimensions(frame.rows, frame.cols, stride, frame.format, frame.tile);
}

// The frame where it lies, if it can be shaped there.
Image ImageOf(const Frame& frame, const unsigned char* bytes, std::size_t size) {
  if (size >= StridedBytes(frame)) {
    Image image(const_cast<unsigned char*>(bytes), size);  // shaping it writes nothing
    Require(Shape(frame, image));
    return image;
  }
  Image image;
  Require(Shape(frame, image));
  std::copy_n(bytes, size, image.GetData());
  return image;
}

ImageConverter& Converter() {
  static ImageConverter converter;
  return converter;
}

// What a conversion starts from, after it was asked whether it converts.
Image Prepare(const Frame& frame, const unsigned char* bytes, std::size_t size,
              PixelFormat target) {
  Image image = ImageOf(frame, bytes, size);
  if (frame.format == PIXEL_FORMAT_RAW12 && frame.method != DEFAULT) {
    Image samples;  // packed mosaics hand no method on to the demosaicing
    Require(CheckConversion(image, PIXEL_FORMAT_RAW16));
    Require(Converter().Convert(&image, PIXEL_FORMAT_RAW16, &samples));
    image = std::move(samples);
  }
  Require(image.SetColorProcessing(frame.method));
  Require(CheckConversion(image, target));
  return image;
}

void ConvertInto(const Image& source, const Frame& picture, unsigned char* bytes,
                 std::size_t size) {
  if (size >= StridedBytes(picture)) {
    Image image(bytes, size);
    Require(Converter().Convert(&source, picture.format, &image));
    return;
  }
  Image image;
  Require(Converter().Convert(&source, picture.format, &image));
  std::copy_n(image.GetData(), size, bytes);
}

// Only where a mosaic becomes colour may a step find no memory and leave bytes unwritten.
bool MayLeaveBytes(PixelFormat source, PixelFormat target) {
  return std::ranges::any_of(ExpandRoute(source, target), [](const RouteCall& call) {
    return call.routine->kind == RoutineInfo::Kind::Demosaic;
  });
}

// An array for a picture, with room to shape it. No byte of it shows what its memory held before.
py::array_t<unsigned char> NewArray(const Frame& picture, PixelFormat source) {
  const std::size_t size = std::max(FrameBytes(picture), StridedBytes(picture));
  py::array_t<unsigned char> array(static_cast<py::ssize_t>(size));
  if (MayLeaveBytes(source, picture.format)) {
    std::fill_n(array.mutable_data(), size, static_cast<unsigned char>(0));
  }
  return array;
}

// `source` holds the frame's bytes, C-contiguous, its last group whole or cut after its last pixel.
// `out` has the size of the whole picture, is C-contiguous and apart from the source; without it,
// the result is a new array of bytes.
py::array Convert(const py::array& source, unsigned int rows, unsigned int cols,
                  std::uint32_t format, int tile, int method, std::uint32_t target,
                  std::optional<py::array> out) {
  const Frame frame{rows, cols, static_cast<PixelFormat>(format),
                    static_cast<BayerTileFormat>(tile),
                    static_cast<ColorProcessingAlgorithm>(method)};
  const Frame picture{rows, cols, static_cast<PixelFormat>(target), frame.tile, DEFAULT};
  const auto* bytes = static_cast<const unsigned char*>(source.data());
  const auto size = static_cast<std::size_t>(source.nbytes());

  const Image image = [&] {
    const py::gil_scoped_release released;
    return Prepare(frame, bytes, size, picture.format);
  }();
  py::array result = out ? *out : NewArray(picture, frame.format);
  auto* resultBytes = static_cast<unsigned char*>(result.mutable_data());
  const auto resultSize = static_cast<std::size_t>(result.nbytes());
  {
    const py::gil_scoped_release released;
    ConvertInto(image, picture, resultBytes, resultSize);
  }
  if (out || resultSize == FrameBytes(picture)) {
    return result;
  }
  return result[py::slice(0, static_cast<py::ssize_t>(FrameBytes(picture)), 1)];
}

// --- Tables

std::string Text(std::string_view text) {
  return std::string(text);
}

// The type of a sample as NumPy writes it: "|u1", "<u2", "=i2".
std::string DtypeOf(const PixelFormatInfo& info) {
  const bool areWords = info.bitsPerSample == 16;
  const char order = !areWords ? '|' : info.order == SampleOrder::Host ? '=' : '<';
  return {order, info.isSigned ? 'i' : 'u', areWords ? '2' : '1'};
}

py::list Formats() {
  py::list rows;
  for (const PixelFormatInfo& info : PixelFormats()) {
    rows.append(py::dict(
        py::arg("value") = static_cast<std::uint32_t>(info.format), py::arg("name") = info.name,
        py::arg("enumerator") = info.enumerator,
        py::arg("aliases") = py::tuple(py::str(Text(info.aliases)).attr("split")()),
        py::arg("bits_per_pixel") = info.bitsPerPixel,
        py::arg("pixels_per_group") = info.pixelsPerGroup,
        py::arg("bytes_per_group") = info.bytesPerGroup, py::arg("convertible") = info.convertible,
        py::arg("layout") = info.layout, py::arg("raw") = info.IsRaw(),
        py::arg("dtype") = DtypeOf(info), py::arg("channels") = info.Channels()));
  }
  return rows;
}

using NamedValues = std::vector<std::pair<std::string, int>>;

NamedValues Tiles() {
  NamedValues rows;
  for (const BayerTileInfo& info : BayerTiles()) {
    rows.emplace_back(info.name, info.tile);
  }
  return rows;
}

NamedValues Methods() {
  NamedValues rows;
  for (const ColorProcessingInfo& info : ColorProcessings()) {
    rows.emplace_back(info.name, info.method);
  }
  return rows;
}

NamedValues ErrorCodes() {
  NamedValues rows;
  for (int code = VORERROR_UNDEFINED; code <= VORERROR_INCOMPATIBLE_DRIVER; ++code) {
    rows.emplace_back(GetErrorTypeName(static_cast<ErrorType>(code)), code);
  }
  return rows;
}

std::optional<std::uint32_t> FindFormat(std::string_view name) {
  const PixelFormatInfo* info = FindPixelFormat(name);
  return info == nullptr ? std::nullopt : std::optional<std::uint32_t>(info->format);
}

// A look-up by name that answers a plain number.
template <auto Find>
std::optional<int> ValueOf(std::string_view name) {
  const auto value = Find(name);
  return value ? std::optional<int>(*value) : std::nullopt;
}

// "converted", "copied" or "refused"; the routine; the kernels that run.
std::tuple<std::string, std::optional<std::string>, std::vector<std::string>> RouteOf(
    std::uint32_t source, std::uint32_t target) {
  if (source == target) {
    return {"copied", std::nullopt, {}};
  }
  const auto calls =
      ExpandRoute(static_cast<PixelFormat>(source), static_cast<PixelFormat>(target));
  if (calls.empty()) {
    return {"refused", std::nullopt, {}};
  }
  std::vector<std::string> kernels;
  for (const RouteCall& call : calls) {
    if (call.IsPass()) {
      kernels.emplace_back(call.routine->name);
    }
  }
  return {"converted", Text(calls.front().routine->name), kernels};
}

}  // namespace
}  // namespace Korvex2::Python

PYBIND11_MODULE(_core, module) {
  using namespace Korvex2::Python;
  py::register_local_exception_translator(&Translate);
  module.def("version", &Korvex2::GetVersion);
  module.def("formats", &Formats);
  module.def("tiles", &Tiles);
  module.def("methods", &Methods);
  module.def("error_codes", &ErrorCodes);
  module.def("find_format", &FindFormat);
  module.def("find_tile", &ValueOf<&Korvex2::FindBayerTile>);
  module.def("find_method", &ValueOf<&Korvex2::FindColorProcessing>);
  module.def("tile_in_format_name", &ValueOf<&Korvex2::TileInFormatName>);
  module.def("route", &RouteOf);
  module.def("convert", &Convert);
}
