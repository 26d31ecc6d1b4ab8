#include "cli/plot/PlotStyle.h"

#include <iterator>

namespace cli {
namespace {

/// By daylight.
constexpr auto dayStyle =
    R"(text{font-family:"DejaVu Sans","Noto Sans",Helvetica,Arial,sans-serif;font-size:13px;fill:#1a1a1a}
.title{font-size:17px;font-weight:bold}
.verdict{font-size:15px}
.soft{fill:#555}
.strong{font-weight:bold}
.halo{paint-order:stroke;stroke:#fff;stroke-width:4px;stroke-linejoin:round}
.ground{fill:#fff}
.frame{fill:none;stroke:#1a1a1a;stroke-width:1}
.grid{stroke:#d8d8d8;stroke-width:1}
.tick{stroke:#1a1a1a;stroke-width:1}
.one{stroke:#1a1a1a;stroke-width:1.5}
.cut{stroke:#1a1a1a;stroke-width:1.2;stroke-dasharray:5 3}
.mark{fill:#1a1a1a}
.band{fill:#9dbbe0}
.curve{fill:none;stroke:#0b3f7f;stroke-width:2;stroke-linejoin:round}
.dot{fill:#0b3f7f}
.worst{fill:none;stroke:#1a1a1a;stroke-width:2}
.same{fill:#fff}
.power{fill:url(#power)}
.range{fill:url(#range)}
.gain{fill:url(#gain)}
.tone{fill:url(#tone)}
.matrix{fill:url(#matrix)}
.unmatched{fill:url(#unmatched)}
.unmeasured{fill:url(#unmeasured)}
.l{fill:none;stroke-width:2}
.power-b{fill:#fde3cf}.power-l{stroke:#c2410c}
.range-b{fill:#e9dcfb}.range-l{stroke:#6d28d9}
.gain-b{fill:#cfeee9}.gain-l{stroke:#0f766e}
.tone-b{fill:#fbd5d5}.tone-l{stroke:#b91c1c}
.matrix-b{fill:#d7e3fd}.matrix-d{fill:#1d4ed8}
.none-b{fill:#f0f0f0}.none-l{stroke:#777}.none-d{fill:#777}
)";

constexpr auto nightStyle = R"(@media (prefers-color-scheme:dark){
text{fill:#e8e8e8}
.soft{fill:#aaa}
.halo{stroke:#161616}
.ground{fill:#161616}
.frame,.tick,.one,.cut,.worst{stroke:#e8e8e8}
.grid{stroke:#3a3a3a}
.mark{fill:#e8e8e8}
.band{fill:#2c4a70}
.curve{stroke:#8ec1ff}
.dot{fill:#8ec1ff}
.same{fill:#161616}
.power-b{fill:#4a260f}.power-l{stroke:#ff9d5c}
.range-b{fill:#33214f}.range-l{stroke:#b794f6}
.gain-b{fill:#0d3b37}.gain-l{stroke:#4fd1c0}
.tone-b{fill:#4c1717}.tone-l{stroke:#f88}
.matrix-b{fill:#1a2b57}.matrix-d{fill:#8ab0ff}
.none-b{fill:#2a2a2a}.none-l{stroke:#999}.none-d{fill:#999}
}
)";

// Slanted, level and upright lines, a lattice, squares; for what was not compared, lines that slant the other way, and
// dots.
constexpr auto patterns = R"(<defs>
<pattern id="power" width="8" height="8" patternUnits="userSpaceOnUse"><rect width="8" height="8" class="power-b"/><path d="M-2 2L2-2M0 8L8 0M6 10L10 6" class="l power-l"/></pattern>
<pattern id="range" width="8" height="6" patternUnits="userSpaceOnUse"><rect width="8" height="6" class="range-b"/><path d="M0 3H8" class="l range-l"/></pattern>
<pattern id="gain" width="6" height="8" patternUnits="userSpaceOnUse"><rect width="6" height="8" class="gain-b"/><path d="M3 0V8" class="l gain-l"/></pattern>
<pattern id="tone" width="8" height="8" patternUnits="userSpaceOnUse"><rect width="8" height="8" class="tone-b"/><path d="M0 4H8M4 0V8" class="l tone-l"/></pattern>
<pattern id="matrix" width="10" height="10" patternUnits="userSpaceOnUse"><rect width="10" height="10" class="matrix-b"/><path d="M0 0H5V5H0zM5 5H10V10H5z" class="matrix-d"/></pattern>
<pattern id="unmatched" width="14" height="14" patternUnits="userSpaceOnUse"><rect width="14" height="14" class="none-b"/><path d="M-2-2L16 16M-2 12L2 16M12-2L16 2" class="l none-l"/></pattern>
<pattern id="unmeasured" width="8" height="8" patternUnits="userSpaceOnUse"><rect width="8" height="8" class="none-b"/><circle cx="4" cy="4" r="1.4" class="none-d"/></pattern>
</defs>
)";

}  // namespace

std::string plotStyle(PlotGround ground) {
  std::string style = "<style>\n";
  style.append(dayStyle).append(ground == PlotGround::Screen ? nightStyle : "");
  return style.append("</style>\n").append(patterns);
}

const char* fillOf(diagnosis::CauseKind kind) {
  // In the order of the enumeration.
  constexpr const char* fills[] = {"same", "same",   "power",       "range",        "gain",
                                   "tone", "matrix", unmatchedFill, unmeasuredFill, unmeasuredFill};
  static_assert(std::size(fills) == static_cast<std::size_t>(diagnosis::CauseKind::Unreadable) + 1);
  return fills[static_cast<std::size_t>(kind)];
}

}  // namespace cli
