// Writes a display list as an SVG document: the same picture the desktop
// views paint, for export, for the command line and for test artefacts.
#pragma once

#include <functional>
#include <string>

#include "views/displaylist.h"

namespace veloran {

// Turns an image's resource name ("map_1024.jpg") into what the SVG's image
// element points at: a data: URI, a file path or a URL. An empty result
// means the image is missing; the writer then fills its rectangle with a
// plain sea colour so the rest of the picture still reads.
using SvgImageResolver = std::function<std::string(const std::string& name)>;

// The whole document for `list`. Every number uses '.' as its decimal point
// whatever the locale. The list's y axis grows upwards; the SVG's grows
// downwards, so every y is flipped, and texts stand at their lower left
// corner as in the views.
std::string WriteSvg(const DisplayList& list, const SvgImageResolver& resolve);

// Writes `text` to `path`; 1 on success, 0 with errno set otherwise.
int WriteTextFile(const std::string& path, const std::string& text);

// A data: URI holding the file's bytes (JPEG or PNG by the file's ending);
// empty when the file cannot be read.
std::string ImageFileAsDataUri(const std::string& path);

}  // namespace veloran
