#include "windows/prepro_error_controller.h"

#include "windows/shown_text.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QStyle>
#include <QTextDocument>
#include <QTextEdit>
#include <QTextFrame>
#include <QVBoxLayout>

namespace tessaril {

namespace {

constexpr const char* generalHeader = "A compilation error occurred.";
constexpr int textInset = 20; // pixels, left and right
constexpr int textPointSize = 11;
constexpr int iconSize = 32;

} // namespace

PreproErrorController::PreproErrorController(const compilerError& error)
    : exclamImage(new QLabel), errorHeaderLabel(new QLabel), errorTextView(new QTextEdit) {
    setObjectName("preproErrorWindow");
    setWindowTitle(windowTitleText(error.title));
    makeErrorText(error);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QPushButton* close = buttons->button(QDialogButtonBox::Close);
    close->setDefault(true);
    close->setIcon({});
    QObject::connect(close, &QPushButton::clicked, this, &QWidget::close);
    QObject::connect(new QShortcut(QKeySequence::Cancel, this), &QShortcut::activated, this,
                     &QWidget::close);

    auto* rows = new QVBoxLayout(this);
    rows->setSpacing(10);
    rows->addWidget(makeHeader(error));
    rows->addWidget(errorTextView, 1);
    rows->addWidget(buttons);
    resize(800, 400);
    close->setFocus();
}

QWidget* PreproErrorController::makeHeader(const compilerError& error) {
    const QIcon caution = style()->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, this);
    exclamImage->setObjectName("exclamImage");
    exclamImage->setPixmap(caution.pixmap(iconSize));

    errorHeaderLabel->setObjectName("errorHeaderLabel");
    errorHeaderLabel->setTextFormat(Qt::PlainText);
    errorHeaderLabel->setText(error.header ? qtText(*error.header) : QString(generalHeader));
    QFont bold = errorHeaderLabel->font();
    bold.setBold(true);
    errorHeaderLabel->setFont(bold);

    auto* header = new QWidget;
    auto* columns = new QHBoxLayout(header);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(10);
    columns->addWidget(exclamImage);
    columns->addWidget(errorHeaderLabel, 1);
    return header;
}

void PreproErrorController::makeErrorText(const compilerError& error) {
    QFont monospaced = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    monospaced.setPointSize(textPointSize);
    errorTextView->setObjectName("errorTextView");
    errorTextView->setAccessibleName("Error message");
    errorTextView->setFont(monospaced);
    errorTextView->setReadOnly(true);
    errorTextView->setTextInteractionFlags(Qt::TextSelectableByMouse |
                                           Qt::TextSelectableByKeyboard);
    errorTextView->setLineWrapMode(QTextEdit::NoWrap);
    errorTextView->setTabChangesFocus(true);
    errorTextView->setPlainText(qtText(error.text));

    // The inset belongs to the text and scrolls with it.
    QTextDocument* document = errorTextView->document();
    document->setDocumentMargin(0);
    QTextFrameFormat inset = document->rootFrame()->frameFormat();
    inset.setLeftMargin(textInset);
    inset.setRightMargin(textInset);
    document->rootFrame()->setFrameFormat(inset);
}

} // namespace tessaril
