#pragma once

#include "platform/alerts.h"
#include "platform/dispatcher.h"

#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include <deque>
#include <string>

namespace tessaril {

/// Alerts as message boxes. To be made on the main thread.
///
/// Titles and texts are shown as they are, whatever markup a style's name holds, and can be
/// selected and copied. Single-button alerts are shown one after another.
class QtAlerts : public Alerts {
public:
    /// `dispatcher` must live longer, and must have no task of showAlert left when this goes.
    explicit QtAlerts(Dispatcher& dispatcher);

    void showAlert(std::string_view title, std::string_view text) override;

    /// Escape, like closing, picks the last button; where that one is destructive, the first. An
    /// alert that is on the screen is to be closed first.
    alertAnswer ask(const alertQuestion& question) override;

    void beep() override;

    /// From now on every question counts as closed at once; for an application that ends and whose
    /// tasks may still ask.
    void stopAsking() { mayAsk = false; }

    /// Waits until the user has closed every alert. For quitting: the last save may have failed.
    void finish();

private:
    struct message {
        std::string title;
        std::string text;
    };

    void showNext();
    void waitForShown();

    Dispatcher& dispatcher;
    QObject boxes;               ///< hears of their ends, until the alerts are gone themselves
    std::deque<message> waiting; ///< main thread only, like all below
    QPointer<QMessageBox> shown; ///< the alert on the screen
    int openQuestions = 0;
    bool mayAsk = true;
    QPointer<QWidget> lastWindow; ///< the one that was active last, no dialog
};

} // namespace tessaril
