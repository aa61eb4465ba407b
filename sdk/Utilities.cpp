#include "Utilities.h"

#include <link.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <span>
#include <string>

#include "InternalError.h"

namespace Korvex2 {
namespace {

namespace fs = std::filesystem;

constexpr ByteOrder kHostByteOrder =
    std::endian::native == std::endian::little ? BYTE_ORDER_LITTLE_ENDIAN : BYTE_ORDER_BIG_ENDIAN;
constexpr OSType kHostOs = sizeof(void*) == 8 ? LINUX_X64 : LINUX_X86;

void Put(std::span<char> field, const std::string& text, const char* ifEmpty) {
  const std::string& shown = text.empty() ? std::string(ifEmpty) : text;
  std::snprintf(field.data(), field.size(), "%s", shown.c_str());
}

void AppendToList(std::string& list, const std::string& item) {
  if (!list.empty()) {
    list += ", ";
  }
  list += item;
}

std::string FirstLine(const fs::path& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

// The value of the first "key<separator> value" line of a file, without quotes.
std::string ValueOf(const fs::path& path, const std::string& key, char separator) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    const std::size_t at = line.find(separator);
    if (at == std::string::npos || !line.starts_with(key) ||
        line.find_first_not_of(" \t", key.size()) != at) {
      continue;
    }
    std::string value = line.substr(std::min(line.find_first_not_of(" \t\"", at + 1), line.size()));
    while (!value.empty() && (value.back() == '"' || value.back() == ' ')) {
      value.pop_back();
    }
    return value;
  }
  return {};
}

std::string DescribeOs() {
  std::string text = ValueOf("/etc/os-release", "PRETTY_NAME", '=');
  utsname names{};
  if (uname(&names) == 0) {
    AppendToList(text, std::string(names.sysname) + ' ' + names.release + ' ' + names.machine);
  }
  return text;
}

// x86 names its processors; Arm gives implementer and part numbers only; s390 its machine type.
std::string DescribeCpu() {
  const char* const cpuinfo = "/proc/cpuinfo";
  if (std::string model = ValueOf(cpuinfo, "model name", ':'); !model.empty()) {
    return model;
  }
  const std::string implementer = ValueOf(cpuinfo, "CPU implementer", ':');
  const std::string part = ValueOf(cpuinfo, "CPU part", ':');
  if (!implementer.empty()) {
    return "Arm implementer " + implementer + " part " + part;
  }
  return ValueOf(cpuinfo, "vendor_id", ':');
}

std::string ListDrivers() {
  constexpr const char* kKinds[] = {"video", "uvc", "usb", "v4l", "cam", "media", "1394"};
  std::ifstream modules("/proc/modules");
  std::string list;
  for (std::string line; std::getline(modules, line);) {
    const std::string name = line.substr(0, line.find(' '));
    const bool concerns = std::ranges::any_of(
        kKinds, [&](const char* kind) { return name.find(kind) != std::string::npos; });
    if (concerns) {
      AppendToList(list, name);
    }
  }
  return list;
}

int AppendLibrary(dl_phdr_info* info, std::size_t, void* list) {
  if (info->dlpi_name != nullptr && *info->dlpi_name != '\0') {
    AppendToList(*static_cast<std::string*>(list), fs::path(info->dlpi_name).filename().string());
  }
  return 0;
}

std::string ListLibraries() {
  std::string list;
  dl_iterate_phdr(AppendLibrary, &list);
  return list;
}

// The entries of /sys/class/drm in a stable order: card0, card0-HDMI-A-1, ...
std::set<fs::path> DisplayEntries() {
  std::set<fs::path> entries;
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator("/sys/class/drm", ignored)) {
    if (entry.path().filename().string().starts_with("card")) {
      entries.insert(entry.path());
    }
  }
  return entries;
}

std::string DescribeGpus() {
  std::string list;
  for (const fs::path& entry : DisplayEntries()) {
    const std::string vendor = FirstLine(entry / "device/vendor");
    if (!vendor.empty() && entry.filename().string().find('-') == std::string::npos) {
      AppendToList(list, vendor + ":" + FirstLine(entry / "device/device"));
    }
  }
  return list;
}

void MeasureScreen(SystemInfo& info) {
  for (const fs::path& entry : DisplayEntries()) {
    std::size_t width = 0;
    std::size_t height = 0;
    const std::string mode = FirstLine(entry / "modes");  // "1920x1080", the preferred one first
    if (FirstLine(entry / "status") == "connected" &&
        std::sscanf(mode.c_str(), "%zux%zu", &width, &height) == 2) {
      info.screenWidth = width;
      info.screenHeight = height;
      return;
    }
  }
}

std::size_t Positive(long value) {
  return value > 0 ? static_cast<std::size_t>(value) : 0;
}

SystemInfo Described() {
  SystemInfo info{};
  info.byteOrder = kHostByteOrder;
  info.osType = kHostOs;
  info.sysMemSize = Positive(sysconf(_SC_PHYS_PAGES)) * Positive(sysconf(_SC_PAGESIZE));
  info.numCpuCores = Positive(sysconf(_SC_NPROCESSORS_ONLN));
  Put(info.osDescription, DescribeOs(), "unknown");
  Put(info.cpuDescription, DescribeCpu(), "unknown");
  Put(info.driverList, ListDrivers(), "none");
  Put(info.libraryList, ListLibraries(), "none");
  Put(info.gpuDescription, DescribeGpus(), "none");
  MeasureScreen(info);
  return info;
}

}  // namespace

Error Utilities::GetSystemInfo(SystemInfo* pSystemInfo) noexcept {
  if (pSystemInfo == nullptr) {
    return InternalError(__LINE__, "Utilities.cpp", __DATE__, __TIME__, VORERROR_INVALID_PARAMETER,
                         "There is no record to fill: the pointer is NULL.");
  }
  *pSystemInfo = SystemInfo{};
  pSystemInfo->byteOrder = kHostByteOrder;
  pSystemInfo->osType = kHostOs;
  try {
    // Read once: a dozen files stand behind it, and every converter asks.
    static const SystemInfo info = Described();
    *pSystemInfo = info;
  } catch (...) {
    return InternalError(__LINE__, "Utilities.cpp", __DATE__, __TIME__, VORERROR_FAILED,
                         "The description of the system is incomplete.");
  }
  return Error();
}

}  // namespace Korvex2
