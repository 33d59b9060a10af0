#include "windows/empty_list_page.h"

#include "windows/droplet.h"

#include <QAction>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tessaril {

namespace {

constexpr const char* headingText = "No Styles Yet";
constexpr const char* adviceText = "Import a style file to begin, or drop one here.\n"
                                   "UserCSS, plain CSS, Less and Stylus files are understood.";
constexpr int pictureSize = 72;
constexpr int buttonPadding = 14;

} // namespace

EmptyListPage::EmptyListPage(QAction& import) {
    auto* picture = new QLabel;
    picture->setPixmap(dropletPixmap(pictureSize, devicePixelRatioF()));

    auto* heading = new QLabel(headingText);
    QFont large = heading->font();
    large.setPointSizeF(large.pointSizeF() * 1.5);
    large.setBold(true);
    heading->setFont(large);

    auto* advice = new QLabel(adviceText);
    advice->setAlignment(Qt::AlignHCenter);
    advice->setWordWrap(true);

    auto* button = new QPushButton(import.text());
    button->setObjectName("beginButton");
    button->setAutoDefault(true);
    button->setMinimumWidth(button->sizeHint().width() + 2 * buttonPadding);
    QObject::connect(button, &QPushButton::clicked, &import, &QAction::trigger);
    setFocusProxy(button);

    auto* rows = new QVBoxLayout(this);
    rows->setSpacing(12);
    rows->addStretch(2);
    rows->addWidget(picture, 0, Qt::AlignHCenter);
    rows->addWidget(heading, 0, Qt::AlignHCenter);
    rows->addWidget(advice);
    rows->addSpacing(6);
    rows->addWidget(button, 0, Qt::AlignHCenter);
    rows->addStretch(3);
}

} // namespace tessaril
