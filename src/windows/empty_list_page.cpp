#include "windows/empty_list_page.h"

#include "windows/droplet.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace tessaril {

namespace {

constexpr const char* emptyHeading = "No Styles Yet";
constexpr const char* emptyAdvice = "Write a style or import a style file to begin, or drop one "
                                    "here.\nUserCSS, plain CSS, Less and Stylus files are "
                                    "understood.";
constexpr const char* noMatchHeading = "No Styles Found";
constexpr const char* noMatchAdvice = "No style has that in its name, its sites or its author.";
constexpr int pictureSize = 72;
constexpr int buttonPadding = 14;

/// Fills the page with a picture, the texts and a row of buttons.
void layOut(QWidget& page, const char* headingText, const char* adviceText,
            const QList<QPushButton*>& buttons) {
    auto* picture = new QLabel;
    picture->setPixmap(dropletPixmap(pictureSize, page.devicePixelRatioF()));

    auto* heading = new QLabel(headingText);
    QFont large = heading->font();
    large.setPointSizeF(large.pointSizeF() * 1.5);
    large.setBold(true);
    heading->setFont(large);

    auto* advice = new QLabel(adviceText);
    advice->setAlignment(Qt::AlignHCenter);
    advice->setWordWrap(true);

    auto* buttonRow = new QHBoxLayout;
    buttonRow->setSpacing(10);
    buttonRow->addStretch();
    int width = 0;
    for (const QPushButton* button : buttons)
        width = std::max(width, button->sizeHint().width() + 2 * buttonPadding);
    for (QPushButton* button : buttons) {
        button->setAutoDefault(true);
        button->setMinimumWidth(width);
        buttonRow->addWidget(button);
    }
    buttonRow->addStretch();

    auto* rows = new QVBoxLayout(&page);
    rows->setSpacing(12);
    rows->addStretch(2);
    rows->addWidget(picture, 0, Qt::AlignHCenter);
    rows->addWidget(heading, 0, Qt::AlignHCenter);
    rows->addWidget(advice);
    rows->addSpacing(6);
    rows->addLayout(buttonRow);
    rows->addStretch(3);
    page.setFocusProxy(buttons.first());
}

QPushButton* buttonOf(QAction& action, const char* name) {
    auto* button = new QPushButton(action.text());
    button->setObjectName(name);
    QObject::connect(button, &QPushButton::clicked, &action, &QAction::trigger);
    return button;
}

} // namespace

EmptyListPage::EmptyListPage(QAction& create, QAction& import, QAction* fromURL) {
    QList<QPushButton*> buttons = {buttonOf(import, "beginButton")};
    if (fromURL) buttons.push_back(buttonOf(*fromURL, "fromURLButton"));
    buttons.push_back(buttonOf(create, "newStyleButton"));
    layOut(*this, emptyHeading, emptyAdvice, buttons);
}

NoMatchPage::NoMatchPage() {
    auto* showAll = new QPushButton("Show All");
    showAll->setObjectName("showAllButton");
    connect(showAll, &QPushButton::clicked, this, &NoMatchPage::showAllWanted);
    layOut(*this, noMatchHeading, noMatchAdvice, {showAll});
}

} // namespace tessaril
