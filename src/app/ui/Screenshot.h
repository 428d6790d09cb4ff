#pragma once

#include <QString>

namespace quillon {

class AppDelegate;

// For the documentation: once the window is ready (its filter library
// read), saves a picture of it to `path` and quits the application with 0,
// or 1 when the picture cannot be saved or the window is not ready within a
// minute. With `ofResults` it first starts the run of the chain and pictures
// the results window once the run has ended and its thumbnails are in.
void takeScreenshotWhenReady(AppDelegate& delegate, const QString& path, bool ofResults);

} // namespace quillon
