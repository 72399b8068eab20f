#include <tessera/tessera.h>

#include <sstream>
#include <string>

#include "Tour.h"

namespace Tour {

namespace {
Tessera::StaticInitialize settings(
    [](void*) -> void* { return new std::string("made on first use"); },
    [](void* instance, void*) { delete static_cast<std::string*>(instance); }, nullptr);
}

void ShowFrame() {
  Heading("frame: static instances, errors, durations");
  std::cout << "static instance: " << *static_cast<std::string*>(settings.GetInstanceLazy()) << '\n';
  settings.Dispose();
  try {
    settings.GetInstanceLazy();
  } catch (const Plaint::LogicError& error) {
    std::cout << "after Dispose: " << error.what() << " (in " << error.GetContext().function << ")\n";
  }

  Tessera::ParsingError error("unexpected character", PLAINT_CONTEXT("Tour::ParseConfig"));
  Tessera::ParsingErrorLocation location;
  location.line = 3;
  location.SetTextPosition("timeout = 10s;;", Tessera::npos, 13);
  Plaint::AddInfo<Tessera::ErrorInfo_ParsingErrorLocation>(error, location);
  try {
    error.Rethrow();
  } catch (const Tessera::TextProcessingError& caught) {
    const auto* where = caught.GetInfo<Tessera::ErrorInfo_ParsingErrorLocation>();
    std::cout << "caught as TextProcessingError: " << caught.what() << " at line " << where->line
              << ", excerpt \"" << where->text << "\" position " << where->textPosition << '\n';
    std::ostringstream rendered;
    rendered << caught;
    std::string shown = rendered.str();
    const std::size_t mark = shown.find('\xBB');
    if (mark != std::string::npos) shown.replace(mark, 1, "<0xBB>");
    std::cout << "rendered, 0xBB at the position (kept for compatibility): " << shown << '\n';
  }

  timeval out{};
  Tessera::TimeSpan span = Tessera::TimeSpan::minute;
  span -= Tessera::TimeSpan(15000000);
  span.Render(out);
  std::cout << "one minute less 1.5 s: " << span.div(Tessera::TimeSpan::second) << " s, timeval {"
            << out.tv_sec << ", " << out.tv_usec << "}\n";
}

}  // namespace Tour
