#pragma once

#include "platform/compiler_errors.h"

#include <QWidget>

class QLabel;
class QTextEdit;

namespace tessaril {

/// The window about one failed compilation. The error's text is shown unwrapped, as it is, and can
/// be copied. Escape closes.
class PreproErrorController : public QWidget {
public:
    explicit PreproErrorController(const compilerError& error);

private:
    QWidget* makeHeader(const compilerError& error);
    void makeErrorText(const compilerError& error);

    QLabel* exclamImage;
    QLabel* errorHeaderLabel;
    QTextEdit* errorTextView;
};

} // namespace tessaril
