#pragma once

#include <QByteArray>

namespace tessaril {

/// Whether the bytes are an SVG document that draws by itself alone: without a document type, whose
/// entities may grow without end, and without what makes the drawing library open files, which are
/// embedded images and style sheets of other files.
bool isSelfContainedSVG(const QByteArray& bytes);

} // namespace tessaril
