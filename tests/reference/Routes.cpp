#include "reference/Routes.h"

#include <cstring>

namespace Reference {
namespace {

constexpr Format NoTemporary = UNSPECIFIED;
constexpr const char* NoStep = nullptr;
constexpr bool OwnTest = true;
constexpr bool NoTest = false;
constexpr auto Success = RouteRow::Returns::Success;
constexpr auto LastStep = RouteRow::Returns::LastStep;

// clang-format off
constexpr RouteRow kRoutes[] = {
    // One call of a primitive.
    // name                     temporary    step 1                      step 2                      nulls     returns
    {"ConvertRGBToRGBU",        NoTemporary, NoStep,                     "AddAlphaChannel_8bit",     OwnTest,  LastStep},
    {"ConvertRGBToBGR",         NoTemporary, NoStep,                     "Swap_C1C3_3Channel_8bit",  OwnTest,  LastStep},
    {"ConvertRGBUToRGB",        NoTemporary, NoStep,                     "DropAlphaChannel_8bit",    OwnTest,  Success},
    {"ConvertRGBUToBGRU",       NoTemporary, NoStep,                     "Swap_C1C3_4Channel_8bit",  OwnTest,  LastStep},
    {"ConvertRGB16ToBGR16",     NoTemporary, NoStep,                     "Swap_C1C3_3Channel_16bit", OwnTest,  LastStep},
    {"ConvertBGRToRGB",         NoTemporary, NoStep,                     "Swap_C1C3_3Channel_8bit",  OwnTest,  LastStep},
    {"ConvertBGRToBGRU",        NoTemporary, NoStep,                     "AddAlphaChannel_8bit",     OwnTest,  LastStep},
    {"ConvertBGRToBGR16",       NoTemporary, NoStep,                     "Pad_8To16_3Channel",       OwnTest,  LastStep},
    {"ConvertBGRUToRGBU",       NoTemporary, NoStep,                     "Swap_C1C3_4Channel_8bit",  OwnTest,  LastStep},
    {"ConvertBGRUToBGR",        NoTemporary, NoStep,                     "DropAlphaChannel_8bit",    OwnTest,  LastStep},
    {"ConvertBGRUToBGRU16",     NoTemporary, NoStep,                     "Pad_8To16_4Channel",       OwnTest,  LastStep},
    {"ConvertBGR16ToRGB16",     NoTemporary, NoStep,                     "Swap_C1C3_3Channel_16bit", OwnTest,  LastStep},
    {"ConvertBGR16ToBGR",       NoTemporary, NoStep,                     "Truncate_16To8_3Channel",  OwnTest,  LastStep},
    {"ConvertBGR16ToBGRU16",    NoTemporary, NoStep,                     "AddAlphaChannel_16bit",    OwnTest,  LastStep},
    {"ConvertBGRU16ToBGRU",     NoTemporary, NoStep,                     "Truncate_16To8_4Channel",  OwnTest,  LastStep},
    {"ConvertBGRU16ToBGR16",    NoTemporary, NoStep,                     "DropAlphaChannel_16bit",   OwnTest,  LastStep},
    // Two calls with a temporary between them.
    // name                     temporary    step 1                      step 2                      nulls     returns
    {"ConvertY8ToRGBU",         RGB8,        "ConvertY8ToRGB",           "AddAlphaChannel_8bit",     OwnTest,  LastStep},
    {"ConvertY8ToRGB16",        RGB8,        "ConvertY8ToRGB",           "ConvertRGBToRGB16",        OwnTest,  LastStep},
    {"ConvertY8ToRGBU16",       MONO16,      "ConvertY8ToY16",           "ConvertY16ToRGBU16",       OwnTest,  Success},
    {"ConvertY8ToYUV411",       RGB8,        "ConvertY8ToRGB",           "ConvertRGBToYUV411",       OwnTest,  Success},
    {"ConvertY8ToYUV422",       RGB8,        "ConvertY8ToRGB",           "ConvertRGBToYUV422",       OwnTest,  Success},
    {"ConvertY8ToYUV444",       RGB8,        "ConvertY8ToRGB",           "ConvertRGBToYUV444",       OwnTest,  Success},
    {"ConvertY12ToRGB",         MONO8,       "ConvertY12ToY8",           "ConvertY8ToRGB",           OwnTest,  Success},
    {"ConvertY12ToRGBU",        MONO8,       "ConvertY12ToY8",           "ConvertY8ToRGBU",          OwnTest,  Success},
    {"ConvertY12ToRGB16",       MONO16,      "ConvertY12ToY16",          "ConvertY16ToRGB16",        OwnTest,  Success},
    {"ConvertY12ToRGBU16",      MONO16,      "ConvertY12ToY16",          "ConvertY16ToRGBU16",       OwnTest,  Success},
    {"ConvertY12ToYUV411",      MONO8,       "ConvertY12ToY8",           "ConvertY8ToYUV411",        OwnTest,  Success},
    {"ConvertY12ToYUV422",      MONO8,       "ConvertY12ToY8",           "ConvertY8ToYUV422",        OwnTest,  Success},
    {"ConvertY12ToYUV444",      MONO8,       "ConvertY12ToY8",           "ConvertY8ToYUV444",        OwnTest,  Success},
    {"ConvertY16ToRGB",         MONO8,       "ConvertY16ToY8",           "ConvertY8ToRGB",           OwnTest,  Success},
    {"ConvertY16ToRGBU",        MONO8,       "ConvertY16ToY8",           "ConvertY8ToRGBU",          OwnTest,  Success},
    {"ConvertY16ToYUV411",      MONO8,       "ConvertY16ToY8",           "ConvertY8ToYUV411",        OwnTest,  Success},
    {"ConvertY16ToYUV422",      MONO8,       "ConvertY16ToY8",           "ConvertY8ToYUV422",        OwnTest,  Success},
    {"ConvertY16ToYUV444",      MONO8,       "ConvertY16ToY8",           "ConvertY8ToYUV444",        OwnTest,  Success},
    {"ConvertRGBToY12",         MONO8,       "ConvertRGBToY8",           "ConvertY8ToY12",           OwnTest,  Success},
    {"ConvertRGBToY16",         MONO8,       "ConvertRGBToY8",           "ConvertY8ToY16",           OwnTest,  Success},
    {"ConvertRGBToBGRU",        BGR,         "ConvertRGBToBGR",          "AddAlphaChannel_8bit",     OwnTest,  Success},
    {"ConvertRGBToBGR16",       BGR,         "ConvertRGBToBGR",          "Pad_8To16_3Channel",       OwnTest,  Success},
    {"ConvertRGBToBGRU16",      BGR16,       "ConvertRGBToBGR16",        "AddAlphaChannel_16bit",    OwnTest,  Success},
    {"ConvertRGBUToY8",         RGB8,        "ConvertRGBUToRGB",         "ConvertRGBToY8",           OwnTest,  Success},
    {"ConvertRGBUToY12",        RGB8,        "ConvertRGBUToRGB",         "ConvertRGBToY12",          OwnTest,  Success},
    {"ConvertRGBUToY16",        RGB8,        "ConvertRGBUToRGB",         "ConvertRGBToY16",          OwnTest,  Success},
    {"ConvertRGBUToRGB16",      RGB8,        "ConvertRGBUToRGB",         "ConvertRGBToRGB16",        OwnTest,  Success},
    {"ConvertRGBUToYUV411",     RGB8,        "ConvertRGBUToRGB",         "ConvertRGBToYUV411",       OwnTest,  Success},
    {"ConvertRGBUToYUV422",     RGB8,        "ConvertRGBUToRGB",         "ConvertRGBToYUV422",       OwnTest,  Success},
    {"ConvertRGBUToYUV444",     RGB8,        "ConvertRGBUToRGB",         "ConvertRGBToYUV444",       OwnTest,  Success},
    {"ConvertRGBUToBGR",        BGRU,        "Swap_C1C3_4Channel_8bit",  "DropAlphaChannel_8bit",    OwnTest,  Success},
    {"ConvertRGBUToBGR16",      RGB8,        "ConvertRGBUToRGB",         "ConvertRGBToBGR16",        OwnTest,  Success},
    {"ConvertRGBUToBGRU16",     BGRU,        "Swap_C1C3_4Channel_8bit",  "Pad_8To16_4Channel",       OwnTest,  Success},
    {"ConvertRGB16ToY8",        RGB8,        "ConvertRGB16ToRGB",        "ConvertRGBToY8",           OwnTest,  Success},
    {"ConvertRGB16ToY12",       MONO16,      "ConvertRGB16ToY16",        "ConvertY16ToY12",          OwnTest,  Success},
    {"ConvertRGB16ToRGBU",      RGB8,        "ConvertRGB16ToRGB",        "AddAlphaChannel_8bit",     OwnTest,  Success},
    {"ConvertRGB16ToBGR",       RGB8,        "ConvertRGB16ToRGB",        "Swap_C1C3_3Channel_8bit",  OwnTest,  Success},
    {"ConvertRGB16ToBGRU",      BGR,         "ConvertRGB16ToBGR",        "AddAlphaChannel_8bit",     OwnTest,  Success},
    {"ConvertRGB16ToBGRU16",    BGR16,       "ConvertRGB16ToBGR16",      "AddAlphaChannel_16bit",    OwnTest,  Success},
    {"ConvertRGB16ToYUV411",    RGB8,        "ConvertRGB16ToRGB",        "ConvertRGBToYUV411",       OwnTest,  Success},
    {"ConvertRGB16ToYUV422",    RGB8,        "ConvertRGB16ToRGB",        "ConvertRGBToYUV422",       OwnTest,  Success},
    {"ConvertRGB16ToYUV444",    RGB8,        "ConvertRGB16ToRGB",        "ConvertRGBToYUV444",       OwnTest,  Success},
    {"ConvertBGRToY8",          RGB8,        "ConvertBGRToRGB",          "ConvertRGBToY8",           OwnTest,  Success},
    {"ConvertBGRToY12",         RGB8,        "ConvertBGRToRGB",          "ConvertRGBToY12",          OwnTest,  Success},
    {"ConvertBGRToY16",         RGB8,        "ConvertBGRToRGB",          "ConvertRGBToY16",          OwnTest,  Success},
    {"ConvertBGRToRGB16",       RGB8,        "ConvertBGRToRGB",          "ConvertRGBToRGB16",        OwnTest,  Success},
    {"ConvertBGRToYUV411",      RGB8,        "ConvertBGRToRGB",          "ConvertRGBToYUV411",       OwnTest,  Success},
    {"ConvertBGRToRGBU",        RGB8,        "ConvertBGRToRGB",          "AddAlphaChannel_8bit",     OwnTest,  Success},
    {"ConvertBGRToBGRU16",      BGR16,       "ConvertBGRToBGR16",        "AddAlphaChannel_16bit",    OwnTest,  Success},
    {"ConvertBGRToYUV422",      RGB8,        "ConvertBGRToRGB",          "ConvertRGBToYUV422",       OwnTest,  Success},
    {"ConvertBGRToYUV444",      RGB8,        "ConvertBGRToRGB",          "ConvertRGBToYUV444",       OwnTest,  Success},
    {"ConvertBGRUToY8",         BGR,         "ConvertBGRUToBGR",         "ConvertBGRToY8",           OwnTest,  Success},
    {"ConvertBGRUToY12",        BGR,         "ConvertBGRUToBGR",         "ConvertBGRToY12",          OwnTest,  Success},
    {"ConvertBGRUToY16",        BGR,         "ConvertBGRUToBGR",         "ConvertBGRToY16",          OwnTest,  Success},
    {"ConvertBGRUToRGB",        BGR,         "ConvertBGRUToBGR",         "ConvertBGRToRGB",          OwnTest,  Success},
    {"ConvertBGRUToRGB16",      RGB8,        "ConvertBGRUToRGB",         "ConvertRGBToRGB16",        OwnTest,  Success},
    {"ConvertBGRUToBGR16",      BGR,         "ConvertBGRUToBGR",         "ConvertBGRToBGR16",        OwnTest,  Success},
    {"ConvertBGRUToYUV411",     RGB8,        "ConvertBGRUToRGB",         "ConvertRGBToYUV411",       OwnTest,  Success},
    {"ConvertBGRUToYUV422",     RGB8,        "ConvertBGRUToRGB",         "ConvertRGBToYUV422",       OwnTest,  Success},
    {"ConvertBGRUToYUV444",     RGB8,        "ConvertBGRUToRGB",         "ConvertRGBToYUV444",       OwnTest,  Success},
    {"ConvertBGR16ToY8",        BGR,         "ConvertBGR16ToBGR",        "ConvertBGRToY8",           OwnTest,  Success},
    {"ConvertBGR16ToY12",       BGR,         "ConvertBGR16ToBGR",        "ConvertBGRToY12",          OwnTest,  Success},
    {"ConvertBGR16ToY16",       BGR,         "ConvertBGR16ToBGR",        "ConvertBGRToY16",          OwnTest,  Success},
    {"ConvertBGR16ToRGB",       BGR,         "ConvertBGR16ToBGR",        "ConvertBGRToRGB",          OwnTest,  Success},
    {"ConvertBGR16ToRGBU",      RGB8,        "ConvertBGR16ToRGB",        "ConvertRGBToRGBU",         OwnTest,  Success},
    {"ConvertBGR16ToBGRU",      BGR,         "ConvertBGR16ToBGR",        "ConvertBGRToBGRU",         NoTest,   Success},
    {"ConvertBGR16ToYUV411",    RGB8,        "ConvertBGR16ToRGB",        "ConvertRGBToYUV411",       OwnTest,  Success},
    {"ConvertBGR16ToYUV422",    RGB8,        "ConvertBGR16ToRGB",        "ConvertRGBToYUV422",       OwnTest,  Success},
    {"ConvertBGR16ToYUV444",    RGB8,        "ConvertBGR16ToRGB",        "ConvertRGBToYUV444",       OwnTest,  Success},
    {"ConvertBGRU16ToY8",       RGB8,        "ConvertBGRU16ToRGB",       "ConvertRGBToY8",           OwnTest,  Success},
    {"ConvertBGRU16ToY12",      RGB16,       "ConvertBGRU16ToRGB16",     "ConvertRGB16ToY12",        OwnTest,  Success},
    {"ConvertBGRU16ToY16",      RGB16,       "ConvertBGRU16ToRGB16",     "ConvertRGB16ToY16",        OwnTest,  Success},
    {"ConvertBGRU16ToRGB",      BGRU,        "ConvertBGRU16ToBGRU",      "ConvertBGRUToRGB",         OwnTest,  Success},
    {"ConvertBGRU16ToRGBU",     BGRU,        "ConvertBGRU16ToBGRU",      "Swap_C1C3_4Channel_8bit",  OwnTest,  Success},
    {"ConvertBGRU16ToRGB16",    BGR16,       "ConvertBGRU16ToBGR16",     "Swap_C1C3_3Channel_16bit", OwnTest,  Success},
    {"ConvertBGRU16ToBGR",      BGRU,        "ConvertBGRU16ToBGRU",      "DropAlphaChannel_8bit",    OwnTest,  Success},
    {"ConvertBGRU16ToYUV411",   RGB8,        "ConvertBGRU16ToRGB",       "ConvertRGBToYUV411",       OwnTest,  Success},
    {"ConvertBGRU16ToYUV422",   RGB8,        "ConvertBGRU16ToRGB",       "ConvertRGBToYUV422",       OwnTest,  Success},
    {"ConvertBGRU16ToYUV444",   RGB8,        "ConvertBGRU16ToRGB",       "ConvertRGBToYUV444",       OwnTest,  Success},
    {"ConvertYUV411ToY8",       RGB16,       "ConvertYUV411ToRGB16",     "ConvertRGB16ToY8",         OwnTest,  Success},
    {"ConvertYUV411ToY12",      RGB16,       "ConvertYUV411ToRGB16",     "ConvertRGB16ToY12",        OwnTest,  Success},
    {"ConvertYUV411ToY16",      RGB8,        "ConvertYUV411ToRGB",       "ConvertRGBToY16",          OwnTest,  Success},
    {"ConvertYUV411ToRGBU",     RGB8,        "ConvertYUV411ToRGB",       "ConvertRGBToRGBU",         OwnTest,  Success},
    {"ConvertYUV411ToRGB16",    RGB8,        "ConvertYUV411ToRGB",       "ConvertRGBToRGB16",        OwnTest,  Success},
    {"ConvertYUV411ToBGR",      RGB8,        "ConvertYUV411ToRGB",       "ConvertRGBToBGR",          OwnTest,  Success},
    {"ConvertYUV411ToBGRU",     RGB8,        "ConvertYUV411ToRGB",       "ConvertRGBToBGRU",         NoTest,   Success},
    {"ConvertYUV411ToBGR16",    RGB8,        "ConvertYUV411ToRGB",       "ConvertRGBToBGR16",        OwnTest,  Success},
    {"ConvertYUV411ToBGRU16",   RGB8,        "ConvertYUV411ToRGB",       "ConvertRGBToBGRU16",       OwnTest,  Success},
    {"ConvertYUV411ToYUV422",   RGB8,        "ConvertYUV411ToRGB",       "ConvertRGBToYUV422",       OwnTest,  Success},
    {"ConvertYUV411ToYUV444",   RGB8,        "ConvertYUV411ToRGB",       "ConvertRGBToYUV444",       OwnTest,  Success},
    {"ConvertYUV422ToY8",       RGB16,       "ConvertYUV422ToRGB16",     "ConvertRGB16ToY8",         OwnTest,  Success},
    {"ConvertYUV422ToY12",      RGB8,        "ConvertYUV422ToRGB",       "ConvertRGBToY12",          OwnTest,  Success},
    {"ConvertYUV422ToY16",      RGB16,       "ConvertYUV422ToRGB",       "ConvertRGBToY16",          OwnTest,  Success},
    {"ConvertYUV422ToRGBU",     RGB16,       "ConvertYUV422ToRGB16",     "ConvertRGB16ToRGBU",       OwnTest,  Success},
    {"ConvertYUV422ToRGB16",    RGB8,        "ConvertYUV422ToRGB",       "ConvertRGBToRGB16",        OwnTest,  Success},
    {"ConvertYUV422ToBGR",      RGB16,       "ConvertYUV422ToRGB16",     "ConvertRGB16ToBGR",        OwnTest,  Success},
    {"ConvertYUV422ToBGRU",     RGB16,       "ConvertYUV422ToRGB16",     "ConvertRGB16ToBGRU",       OwnTest,  Success},
    {"ConvertYUV422ToBGR16",    RGB16,       "ConvertYUV422ToRGB16",     "ConvertRGB16ToBGR16",      OwnTest,  Success},
    {"ConvertYUV422ToBGRU16",   RGB16,       "ConvertYUV422ToRGB16",     "ConvertRGB16ToBGRU16",     OwnTest,  Success},
    {"ConvertYUV422ToYUV411",   RGB16,       "ConvertYUV422ToRGB16",     "ConvertRGB16ToYUV411",     OwnTest,  Success},
    {"ConvertYUV422ToYUV444",   RGB16,       "ConvertYUV422ToRGB16",     "ConvertRGB16ToYUV444",     OwnTest,  Success},
    {"ConvertYUV444ToY8",       RGB8,        "ConvertYUV444ToRGB",       "ConvertRGBToY8",           OwnTest,  Success},
    {"ConvertYUV444ToY12",      RGB8,        "ConvertYUV444ToRGB",       "ConvertRGBToY12",          OwnTest,  Success},
    {"ConvertYUV444ToY16",      RGB8,        "ConvertYUV444ToRGB",       "ConvertRGBToY16",          OwnTest,  Success},
    {"ConvertYUV444ToRGBU",     RGB8,        "ConvertYUV444ToRGB",       "ConvertRGBToRGBU",         OwnTest,  Success},
    {"ConvertYUV444ToRGB16",    RGB8,        "ConvertYUV444ToRGB",       "ConvertRGBToRGB16",        OwnTest,  Success},
    {"ConvertYUV444ToBGR",      RGB8,        "ConvertYUV444ToRGB",       "ConvertRGBToBGR",          OwnTest,  Success},
    {"ConvertYUV444ToBGRU",     RGB8,        "ConvertYUV444ToRGB",       "ConvertRGBToBGRU",         OwnTest,  Success},
    {"ConvertYUV444ToBGR16",    RGB8,        "ConvertYUV444ToRGB",       "ConvertRGBToBGR16",        OwnTest,  Success},
    {"ConvertYUV444ToBGRU16",   RGB8,        "ConvertYUV444ToRGB",       "ConvertRGBToBGRU16",       OwnTest,  Success},
    {"ConvertYUV444ToYUV411",   RGB8,        "ConvertYUV444ToRGB",       "ConvertRGBToYUV411",       OwnTest,  Success},
    {"ConvertYUV444ToYUV422",   RGB8,        "ConvertYUV444ToRGB",       "ConvertRGBToYUV422",       OwnTest,  Success},
    // Raw sources.
    // name                     temporary    step 1                      step 2                      nulls     returns
    {"ConvertRAW8ToY8",         RGB8,        "ConvertRAW8ToRGB",         "ConvertRGBToY8",           OwnTest,  Success},
    {"ConvertRAW8ToY12",        RGB8,        "ConvertRAW8ToRGB",         "ConvertRGBToY12",          OwnTest,  Success},
    {"ConvertRAW8ToY16",        RGB8,        "ConvertRAW8ToRGB",         "ConvertRGBToY16",          OwnTest,  Success},
    {"ConvertRAW8ToRGB",        NoTemporary, NoStep,                     "ConvertBayerImageToBGR",   OwnTest,  Success},
    {"ConvertRAW8ToRGBU",       RGB8,        "ConvertBayerImageToBGR",   "AddAlphaChannel_8bit",     OwnTest,  Success},
    {"ConvertRAW8ToRGB16",      RGB8,        "ConvertBayerImageToBGR",   "ConvertRGBToRGB16",        OwnTest,  Success},
    {"ConvertRAW8ToBGR",        NoTemporary, NoStep,                     "ConvertBayerImageToBGR",   OwnTest,  Success},
    {"ConvertRAW8ToBGRU",       BGR,         "ConvertBayerImageToBGR",   "AddAlphaChannel_8bit",     OwnTest,  Success},
    {"ConvertRAW8ToBGR16",      BGR,         "ConvertBayerImageToBGR",   "ConvertBGRToBGR16",        OwnTest,  Success},
    {"ConvertRAW8ToBGRU16",     BGR16,       "ConvertRAW8ToBGR16",       "AddAlphaChannel_16bit",    OwnTest,  Success},
    {"ConvertRAW8ToYUV411",     RGB8,        "ConvertRAW8ToRGB",         "ConvertRGBToYUV411",       OwnTest,  Success},
    {"ConvertRAW8ToYUV422",     RGB8,        "ConvertRAW8ToRGB",         "ConvertRGBToYUV422",       OwnTest,  Success},
    {"ConvertRAW8ToYUV444",     RGB8,        "ConvertRAW8ToRGB",         "ConvertRGBToYUV444",       OwnTest,  Success},
    {"ConvertRAW8ToRAW12",      NoTemporary, NoStep,                     "ConvertY8ToY12",           OwnTest,  LastStep},
    {"ConvertRAW8ToRAW16",      NoTemporary, NoStep,                     "ConvertY8ToY16",           OwnTest,  LastStep},
    {"ConvertRAW12ToY8",        RGB8,        "ConvertRAW12ToRGB",        "ConvertRGBToY8",           OwnTest,  Success},
    {"ConvertRAW12ToY12",       RGB8,        "ConvertRAW12ToRGB",        "ConvertRGBToY12",          OwnTest,  Success},
    {"ConvertRAW12ToY16",       RGB16,       "ConvertRAW12ToRGB16",      "ConvertRGB16ToY16",        OwnTest,  Success},
    {"ConvertRAW12ToRGB",       RAW16,       "ConvertY12ToY16",          "ConvertBayerImageToBGR",   OwnTest,  LastStep},
    {"ConvertRAW12ToRGBU",      RGB8,        "ConvertRAW12ToRGB",        "AddAlphaChannel_8bit",     OwnTest,  Success},
    {"ConvertRAW12ToRGB16",     RAW16,       "ConvertY12ToY16",          "ConvertBayerImageToBGR",   OwnTest,  Success},
    {"ConvertRAW12ToBGR",       RAW16,       "ConvertY12ToY16",          "ConvertBayerImageToBGR",   OwnTest,  LastStep},
    {"ConvertRAW12ToBGRU",      BGR,         "ConvertRAW12ToBGR",        "AddAlphaChannel_8bit",     OwnTest,  Success},
    {"ConvertRAW12ToBGR16",     RAW16,       "ConvertY12ToY16",          "ConvertBayerImageToBGR",   OwnTest,  Success},
    {"ConvertRAW12ToBGRU16",    BGR16,       "ConvertRAW12ToBGR16",      "AddAlphaChannel_16bit",    OwnTest,  Success},
    {"ConvertRAW12ToYUV411",    RGB8,        "ConvertRAW12ToRGB",        "ConvertRGBToYUV411",       OwnTest,  Success},
    {"ConvertRAW12ToYUV422",    RGB8,        "ConvertRAW12ToRGB",        "ConvertRGBToYUV422",       OwnTest,  Success},
    {"ConvertRAW12ToYUV444",    RGB8,        "ConvertRAW12ToRGB",        "ConvertRGBToYUV444",       OwnTest,  Success},
    {"ConvertRAW12ToRAW8",      NoTemporary, NoStep,                     "ConvertY12ToY8",           NoTest,   LastStep},
    {"ConvertRAW12ToRAW16",     NoTemporary, NoStep,                     "ConvertY12ToY16",          NoTest,   LastStep},
    {"ConvertRAW16ToY8",        RGB8,        "ConvertRAW16ToRGB",        "ConvertRGBToY8",           OwnTest,  Success},
    {"ConvertRAW16ToY12",       MONO16,      "ConvertRAW16ToY16",        "ConvertY16ToY12",          OwnTest,  Success},
    {"ConvertRAW16ToY16",       RGB16,       "ConvertBayerImageToBGR",   "ConvertRGB16ToY16",        OwnTest,  Success},
    {"ConvertRAW16ToRGB",       NoTemporary, NoStep,                     "ConvertBayerImageToBGR",   OwnTest,  LastStep},
    {"ConvertRAW16ToRGBU",      RGB8,        "ConvertBayerImageToBGR",   "ConvertRGBToRGBU",         OwnTest,  LastStep},
    {"ConvertRAW16ToRGB16",     NoTemporary, NoStep,                     "ConvertBayerImageToBGR",   OwnTest,  LastStep},
    {"ConvertRAW16ToBGR",       NoTemporary, NoStep,                     "ConvertBayerImageToBGR",   OwnTest,  LastStep},
    {"ConvertRAW16ToBGRU",      BGR,         "ConvertBayerImageToBGR",   "AddAlphaChannel_8bit",     OwnTest,  Success},
    {"ConvertRAW16ToBGR16",     NoTemporary, NoStep,                     "ConvertBayerImageToBGR",   OwnTest,  Success},
    {"ConvertRAW16ToBGRU16",    BGR16,       "ConvertBayerImageToBGR",   "AddAlphaChannel_16bit",    OwnTest,  Success},
    {"ConvertRAW16ToYUV411",    RGB8,        "ConvertBayerImageToBGR",   "ConvertRGBToYUV411",       OwnTest,  Success},
    {"ConvertRAW16ToYUV422",    RGB8,        "ConvertBayerImageToBGR",   "ConvertRGBToYUV422",       OwnTest,  Success},
    {"ConvertRAW16ToYUV444",    RGB8,        "ConvertBayerImageToBGR",   "ConvertRGBToYUV444",       OwnTest,  Success},
    {"ConvertRAW16ToRAW8",      NoTemporary, NoStep,                     "ConvertY16ToY8",           NoTest,   Success},
    {"ConvertRAW16ToRAW12",     NoTemporary, NoStep,                     "ConvertY16ToY12",          NoTest,   Success},
};

struct DispatchRow {
  Format source;
  const char* routine[4];
};

constexpr DispatchRow kGreyTargets[] = {
    // source Mono8                Mono12                Mono16
    {MONO8,  {SameFormat,          "ConvertY8ToY12",     "ConvertY8ToY16"}},
    {MONO12, {"ConvertY12ToY8",    SameFormat,           "ConvertY12ToY16"}},
    {MONO16, {"ConvertY16ToY8",    "ConvertY16ToY12",    SameFormat}},
    {RGB8,   {"ConvertRGBToY8",    "ConvertRGBToY12",    "ConvertRGBToY16"}},
    {RGBU,   {"ConvertRGBUToY8",   "ConvertRGBUToY12",   "ConvertRGBUToY16"}},
    {RGB16,  {"ConvertRGB16ToY8",  "ConvertRGB16ToY12",  "ConvertRGB16ToY16"}},
    {BGR,    {"ConvertBGRToY8",    "ConvertBGRToY12",    "ConvertBGRToY16"}},
    {BGRU,   {"ConvertBGRUToY8",   "ConvertBGRUToY12",   "ConvertBGRUToY16"}},
    {BGR16,  {"ConvertBGR16ToY8",  "ConvertBGR16ToY12",  "ConvertBGR16ToY16"}},
    {BGRU16, {"ConvertBGRU16ToY8", "ConvertBGRU16ToY12", "ConvertBGRU16ToY16"}},
    {YUV411, {"ConvertYUV411ToY8", "ConvertYUV411ToY12", "ConvertYUV411ToY16"}},
    {YUV422, {"ConvertYUV422ToY8", "ConvertYUV422ToY12", "ConvertYUV422ToY16"}},
    {YUV444, {"ConvertYUV444ToY8", "ConvertYUV444ToY12", "ConvertYUV444ToY16"}},
    {RAW8,   {"ConvertRAW8ToY8",   "ConvertRAW8ToY12",   "ConvertRAW8ToY16"}},
    {RAW12,  {"ConvertRAW12ToY8",  "ConvertRAW12ToY12",  "ConvertRAW12ToY16"}},
    {RAW16,  {"ConvertRAW16ToY8",  "ConvertRAW16ToY12",  "ConvertRAW16ToY16"}},
};

constexpr DispatchRow kRgbTargets[] = {
    // source RGB                   RGBU                   RGB16
    {MONO8,  {"ConvertY8ToRGB",     "ConvertY8ToRGBU",     "ConvertY8ToRGB16"}},
    {MONO12, {"ConvertY12ToRGB",    "ConvertY12ToRGBU",    "ConvertY12ToRGB16"}},
    {MONO16, {"ConvertY16ToRGB",    "ConvertY16ToRGBU",    "ConvertY16ToRGB16"}},
    {RGB8,   {SameFormat,           "ConvertRGBToRGBU",    "ConvertRGBToRGB16"}},
    {RGBU,   {"ConvertRGBUToRGB",   SameFormat,            "ConvertRGBUToRGB16"}},
    {RGB16,  {"ConvertRGB16ToRGB",  "ConvertRGB16ToRGBU",  SameFormat}},
    {BGR,    {"ConvertBGRToRGB",    "ConvertBGRToRGBU",    "ConvertBGRToRGB16"}},
    {BGRU,   {"ConvertBGRUToRGB",   "ConvertBGRUToRGBU",   "ConvertBGRUToRGB16"}},
    {BGR16,  {"ConvertBGR16ToRGB",  "ConvertBGR16ToRGBU",  "ConvertBGR16ToRGB16"}},
    {BGRU16, {"ConvertBGRU16ToRGB", "ConvertBGRU16ToRGBU", "ConvertBGRU16ToRGB16"}},
    {YUV411, {"ConvertYUV411ToRGB", "ConvertYUV411ToRGBU", "ConvertYUV411ToRGB16"}},
    {YUV422, {"ConvertYUV422ToRGB", "ConvertYUV422ToRGBU", "ConvertYUV422ToRGB16"}},
    {YUV444, {"ConvertYUV444ToRGB", "ConvertYUV444ToRGBU", "ConvertYUV444ToRGB16"}},
    {RAW8,   {"ConvertRAW8ToRGB",   "ConvertRAW8ToRGBU",   "ConvertRAW8ToRGB16"}},
    {RAW12,  {"ConvertRAW12ToRGB",  "ConvertRAW12ToRGBU",  "ConvertRAW12ToRGB16"}},
    {RAW16,  {"ConvertRAW16ToRGB",  "ConvertRAW16ToRGBU",  "ConvertRAW16ToRGB16"}},
};

constexpr DispatchRow kBgrTargets[] = {
    // source BGR                   BGRU                   BGR16                   BGRU16
    {MONO8,  {"ConvertY8ToRGB",     "ConvertY8ToRGBU",     "ConvertY8ToRGB16",     "ConvertY8ToRGBU16"}},
    {MONO12, {"ConvertY12ToRGB",    "ConvertY12ToRGBU",    "ConvertY12ToRGB16",    "ConvertY12ToRGBU16"}},
    {MONO16, {"ConvertY16ToRGB",    "ConvertY16ToRGBU",    "ConvertY16ToRGB16",    "ConvertY16ToRGBU16"}},
    {RGB8,   {"ConvertRGBToBGR",    "ConvertRGBToBGRU",    "ConvertRGBToBGR16",    "ConvertRGBToBGRU16"}},
    {RGBU,   {"ConvertRGBUToBGR",   "ConvertRGBUToBGRU",   "ConvertRGBUToBGR16",   "ConvertRGBUToBGRU16"}},
    {RGB16,  {"ConvertRGB16ToBGR",  "ConvertRGB16ToBGRU",  "ConvertRGB16ToBGR16",  "ConvertRGB16ToBGRU16"}},
    {BGR,    {SameFormat,           "ConvertBGRToBGRU",    "ConvertBGRToBGR16",    "ConvertBGRToBGRU16"}},
    {BGRU,   {"ConvertBGRUToBGR",   SameFormat,            "ConvertBGRUToBGR16",   "ConvertBGRUToBGRU16"}},
    {BGR16,  {"ConvertBGR16ToBGR",  "ConvertBGR16ToBGRU",  SameFormat,             "ConvertBGR16ToBGRU16"}},
    {BGRU16, {"ConvertBGRU16ToBGR", "ConvertBGRU16ToBGRU", "ConvertBGRU16ToBGR16", SameFormat}},
    {YUV411, {"ConvertYUV411ToBGR", "ConvertYUV411ToBGRU", "ConvertYUV411ToBGR16", "ConvertYUV411ToBGRU16"}},
    {YUV422, {"ConvertYUV422ToBGR", "ConvertYUV422ToBGRU", "ConvertYUV422ToBGR16", "ConvertYUV422ToBGRU16"}},
    {YUV444, {"ConvertYUV444ToBGR", "ConvertYUV444ToBGRU", "ConvertYUV444ToBGR16", "ConvertYUV444ToBGRU16"}},
    {RAW8,   {"ConvertRAW8ToBGR",   "ConvertRAW8ToBGRU",   "ConvertRAW8ToBGR16",   "ConvertRAW8ToBGRU16"}},
    {RAW12,  {"ConvertRAW12ToBGR",  "ConvertRAW12ToBGRU",  "ConvertRAW12ToBGR16",  "ConvertRAW12ToBGRU16"}},
    {RAW16,  {"ConvertRAW16ToBGR",  "ConvertRAW16ToBGRU",  "ConvertRAW16ToBGR16",  "ConvertRAW16ToBGRU16"}},
};

constexpr DispatchRow kYuvTargets[] = {
    // source YUV411                   YUV422                   YUV444
    {MONO8,  {"ConvertY8ToYUV411",     "ConvertY8ToYUV422",     "ConvertY8ToYUV444"}},
    {MONO12, {"ConvertY12ToYUV411",    "ConvertY12ToYUV422",    "ConvertY12ToYUV444"}},
    {MONO16, {"ConvertY16ToYUV411",    "ConvertY16ToYUV422",    "ConvertY16ToYUV444"}},
    {RGB8,   {"ConvertRGBToYUV411",    "ConvertRGBToYUV422",    "ConvertRGBToYUV444"}},
    {RGBU,   {"ConvertRGBUToYUV411",   "ConvertRGBUToYUV422",   "ConvertRGBUToYUV444"}},
    {RGB16,  {"ConvertRGB16ToYUV411",  "ConvertRGB16ToYUV422",  "ConvertRGB16ToYUV444"}},
    {BGR,    {"ConvertBGRToYUV411",    "ConvertBGRToYUV422",    "ConvertBGRToYUV444"}},
    {BGRU,   {"ConvertBGRUToYUV411",   "ConvertBGRUToYUV422",   "ConvertBGRUToYUV444"}},
    {BGR16,  {"ConvertBGR16ToYUV411",  "ConvertBGR16ToYUV422",  "ConvertBGR16ToYUV444"}},
    {BGRU16, {"ConvertBGRU16ToYUV411", "ConvertBGRU16ToYUV422", "ConvertBGRU16ToYUV444"}},
    {YUV411, {SameFormat,              "ConvertYUV411ToYUV422", "ConvertYUV411ToYUV444"}},
    {YUV422, {"ConvertYUV422ToYUV411", SameFormat,              "ConvertYUV422ToYUV444"}},
    {YUV444, {"ConvertYUV444ToYUV411", "ConvertYUV444ToYUV422", SameFormat}},
    {RAW8,   {"ConvertRAW8ToYUV411",   "ConvertRAW8ToYUV422",   "ConvertRAW8ToYUV444"}},
    {RAW12,  {"ConvertRAW12ToYUV411",  "ConvertRAW12ToYUV422",  "ConvertRAW12ToYUV444"}},
    {RAW16,  {"ConvertRAW16ToYUV411",  "ConvertRAW16ToYUV422",  "ConvertRAW16ToYUV444"}},
};

constexpr DispatchRow kRawTargets[] = {
    // source RAW8                  RAW12                  RAW16
    {RAW8,   {SameFormat,           "ConvertRAW8ToRAW12",  "ConvertRAW8ToRAW16"}},
    {RAW12,  {"ConvertRAW12ToRAW8", SameFormat,            "ConvertRAW12ToRAW16"}},
    {RAW16,  {"ConvertRAW16ToRAW8", "ConvertRAW16ToRAW12", SameFormat}},
};

struct DispatchTable {
  Format targets[4];
  std::span<const DispatchRow> rows;
};

constexpr DispatchTable kTables[] = {
    {{MONO8, MONO12, MONO16}, kGreyTargets},
    {{RGB8, RGBU, RGB16}, kRgbTargets},
    {{BGR, BGRU, BGR16, BGRU16}, kBgrTargets},
    {{YUV411, YUV422, YUV444}, kYuvTargets},
    {{RAW8, RAW12, RAW16}, kRawTargets},
};
// clang-format on

}  // namespace

std::span<const RouteRow> Routes() {
  return kRoutes;
}

const RouteRow* FindRoute(const char* name) {
  for (const RouteRow& row : kRoutes) {
    if (std::strcmp(row.name, name) == 0) return &row;
  }
  return nullptr;
}

const char* Dispatch(Format source, Format target) {
  for (const DispatchTable& table : kTables) {
    for (std::size_t column = 0; column < 4; ++column) {
      if (table.targets[column] != target || target == UNSPECIFIED) continue;
      for (const DispatchRow& row : table.rows) {
        if (row.source == source) return row.routine[column];
      }
      return nullptr;
    }
  }
  return nullptr;
}

bool IsTarget(Format format) {
  for (const DispatchTable& table : kTables) {
    for (const Format target : table.targets) {
      if (target == format && format != UNSPECIFIED) return true;
    }
  }
  return false;
}

}  // namespace Reference
