// korvex2 routes: what the converter runs for each pair of formats, told from its own tables.

#include "Routes.h"

#include <memory>
#include <string>
#include <vector>

#include "commands/Commands.h"
#include "commands/CommonOptions.h"
#include "terminal/Failure.h"
#include "terminal/Names.h"
#include "terminal/Table.h"

namespace Korvex2::Tool {
namespace {

struct Options {
  std::string from;
  std::string to;
  bool json = false;
};

struct Route {
  PixelFormat source;
  PixelFormat target;
  std::vector<RouteCall> calls;  // none where the pair is copied or refused

  bool IsCopied() const { return source == target; }  // whatever the format
  bool IsRefused() const { return !IsCopied() && calls.empty(); }
};

std::vector<Route> RoutesOf(const PixelFormatInfo* from, const PixelFormatInfo* to) {
  std::vector<Route> routes;
  for (const PixelFormatInfo& source : PixelFormats()) {
    for (const PixelFormatInfo& target : PixelFormats()) {
      const bool wanted = (from == nullptr ? source.convertible : from == &source) &&
                          (to == nullptr ? target.convertible : to == &target);
      if (wanted) {
        routes.push_back({source.format, target.format, ExpandRoute(source.format, target.format)});
      }
    }
  }
  return routes;
}

// --- Text ----------------------------------------------------------------------------------------

// How many passes over the pixels, d for a demosaicing one.
std::string Symbol(const Route& route) {
  if (route.IsRefused()) {
    return ".";
  }
  if (route.IsCopied()) {
    return "=";
  }
  int passes = 0;
  bool demosaics = false;
  for (const RouteCall& call : route.calls) {
    passes += call.IsPass() ? 1 : 0;
    demosaics |= call.routine->kind == RoutineInfo::Kind::Demosaic;
  }
  return std::to_string(passes) + (demosaics ? "d" : "");
}

void PrintMatrix(const std::vector<Route>& routes) {
  Table table = {{"from \\ to"}};
  for (const Route& route : routes) {
    if (route.source == routes.front().source) {
      table.front().emplace_back(NameOf(route.target));
    }
    if (route.target == routes.front().target) {
      table.push_back({std::string(NameOf(route.source))});
    }
    table.back().push_back(Symbol(route));
  }
  Print(table);
  fmt::print(
      "\nA number counts the passes over the pixels, d: one of them demosaics, =: copied, .: "
      "refused.\n"
      "--from and --to name the routines; both together show every step.\n");
}

std::string PassNames(const Route& route) {
  std::string names;
  for (const RouteCall& call : route.calls) {
    if (call.IsPass()) {
      names += names.empty() ? "" : ", ";
      names += call.routine->name;
    }
  }
  return names;
}

std::string RoutineName(const Route& route) {
  if (route.IsRefused()) {
    return "refused";
  }
  return route.IsCopied() ? "copied" : std::string(route.calls.front().routine->name);
}

void PrintList(const std::vector<Route>& routes) {
  Table table = {{"from", "to", "routine", "kernels that run"}};
  for (const Route& route : routes) {
    table.push_back({std::string(NameOf(route.source)), std::string(NameOf(route.target)),
                     RoutineName(route), PassNames(route)});
  }
  Print(table);
}

std::string KindOf(const RouteCall& call) {
  switch (call.routine->kind) {
    case RoutineInfo::Kind::Kernel:
      return "kernel";
    case RoutineInfo::Kind::Demosaic:
      return "demosaic";
    case RoutineInfo::Kind::Wrapper:
      return "forwards";
    case RoutineInfo::Kind::Chain:
      return fmt::format("chain through a {} image", NameOf(call.routine->temporary));
  }
  return "";
}

void PrintSteps(const Route& route) {
  if (route.calls.empty()) {
    fmt::print("{} -> {}: {}\n", NameOf(route.source), NameOf(route.target), RoutineName(route));
    return;
  }
  Table table = {{"routine", "from", "to", "is a", "answers"}};
  for (const RouteCall& call : route.calls) {
    const bool runs = call.IsPass();
    const bool passesOn = call.routine->result == RoutineInfo::Result::LastStep;
    table.push_back({std::string(2 * static_cast<std::size_t>(call.depth), ' ') +
                         std::string(call.routine->name),
                     std::string(NameOf(call.source)), std::string(NameOf(call.target)),
                     KindOf(call),
                     runs       ? "its result"
                     : passesOn ? "its last step's"
                                : "success"});
  }
  Print(table);
  fmt::print("\nKernels that run: {}\n", PassNames(route));
}

// --- JSON ----------------------------------------------------------------------------------------

std::string JsonOf(const RouteCall& call) {
  return fmt::format(R"({{"name": {}, "from": {}, "to": {}}})", Json(call.routine->name),
                     Json(NameOf(call.source)), Json(NameOf(call.target)));
}

std::string JsonOf(const Route& route) {
  std::string kernels;
  for (const RouteCall& call : route.calls) {
    if (call.IsPass()) {
      kernels += (kernels.empty() ? "" : ", ") + JsonOf(call);
    }
  }
  const std::string routine = route.calls.empty() ? "null" : Json(RoutineName(route));
  const char* kind = route.IsRefused() ? "refused" : route.IsCopied() ? "copied" : "converted";
  return fmt::format(R"({{"from": {}, "to": {}, "is": "{}", "routine": {}, "kernels": [{}]}})",
                     Json(NameOf(route.source)), Json(NameOf(route.target)), kind, routine,
                     kernels);
}

void PrintJson(const std::vector<Route>& routes) {
  fmt::print("[");
  const char* separator = "\n";
  for (const Route& route : routes) {
    fmt::print("{}  {}", separator, JsonOf(route));
    separator = ",\n";
  }
  fmt::print("\n]\n");
}

void Run(const Options& options) {
  const auto* from = options.from.empty() ? nullptr : &ParseFormat("--from", options.from);
  const auto* to = options.to.empty() ? nullptr : &ParseFormat("--to", options.to);
  const std::vector<Route> routes = RoutesOf(from, to);
  if (options.json) {
    PrintJson(routes);
  } else if (from != nullptr && to != nullptr) {
    PrintSteps(routes.front());
  } else if (from != nullptr || to != nullptr) {
    PrintList(routes);
  } else {
    PrintMatrix(routes);
  }
}

}  // namespace

Command RoutesCommand() {
  const auto options = std::make_shared<Options>();
  Options& o = *options;
  // clang-format off
  return {
      .name = "routes",
      .help = "Show which kernels run for which pair of formats",
      .options = {
          {"--from", &o.from, FormatWords(), "Only from this format"},
          {"--to",   &o.to,   FormatWords(), "Only to this format"},
          {"--json", &o.json, kFlag,         "Print JSON"},
      },
      .run = [options] { Run(*options); return kDone; },
  };
  // clang-format on
}

}  // namespace Korvex2::Tool
