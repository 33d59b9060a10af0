#pragma once

#include <QByteArray>

namespace tessaril {

/// Whether the bytes are an SVG document that draws by itself alone: without entities of its own,
/// which may grow without end, and without what makes the drawing library open files, which are
/// embedded images and style sheets of other files. A document type may be named, as many drawings
/// do; nobody loads what it names.
bool isSelfContainedSVG(const QByteArray& bytes);

} // namespace tessaril
