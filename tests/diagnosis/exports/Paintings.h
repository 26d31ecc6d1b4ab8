#pragma once

#include "tests/diagnosis/exports/Paint.h"

namespace diagnosis::test {

// Pictures with the look of photographs: structure at every scale, shading, haze, edges, highlights and deep shadows.
Paint coast(double u, double v);
Paint forest(double u, double v);
Paint snow(double u, double v);
Paint mountains(double u, double v);
Paint desert(double u, double v);
Paint rain(double u, double v);  ///< hardly any colour

Paint portrait(double u, double v);
Paint fruit(double u, double v);   ///< saturated
Paint street(double u, double v);  ///< at night
Paint kitchen(double u, double v);
Paint flowers(double u, double v);  ///< saturated
Paint stage(double u, double v);    ///< dark, with coloured light

}  // namespace diagnosis::test
