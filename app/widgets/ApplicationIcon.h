#pragma once

#include <QIcon>

class QPainter;

/// The application's icon: a disc, half as the source and half a shade darker, over a frame. Drawn, so sharp at every
/// size.
QIcon applicationIcon();

/// The same as one picture of that many pixels a side.
QImage applicationIconImage(int side);

/// The same onto anything that is painted on, in a square of that side at its origin.
void drawApplicationIcon(QPainter& painter, int side);
