#pragma once

// A rectangle of a drawing, in pixels from its top left corner.
struct XChartRect {
  double fX = 0.0;
  double fY = 0.0;
  double fWidth = 0.0;
  double fHeight = 0.0;

  double Right() const { return fX + fWidth; }
  double Bottom() const { return fY + fHeight; }
};
