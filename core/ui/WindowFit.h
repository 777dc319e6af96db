#pragma once

#include <QMargins>
#include <QRect>

class QWidget;

// Windows open inside the area of their screen that windows may take (without panels and docks),
// at any size and scale of the screen: a window is never larger than that area, and its frame
// (title bar and borders included) lies within it.
namespace WindowFit {

// The inner geometry of a window whose inner geometry is `inner` and whose frame adds `frame`
// around it, made to fit `available`: shrunk to at most the available size less the frame, then
// moved the least distance that brings the frame inside. A window larger than the area even so
// keeps its top left corner (and title bar) in the area.
QRect Inside(const QRect& inner, const QMargins& frame, const QRect& available);

// Keeps `window` inside the available area of its screen from now on: whenever it is shown (not
// maximised or full screen), its size and position are made to fit. The first time, a window the
// program has not placed itself opens centred on its parent window (or on the screen).
void Keep(QWidget* window);

// Makes `window` fit the available area of its screen now (as Keep does when it shows).
void Fit(QWidget* window);

// The frame the window system puts around `window`: its own once it has been shown, else that
// of a window of the program that is shown (the window system frames them alike), else none.
QMargins FrameOf(const QWidget* window);

}  // namespace WindowFit
