#include "webengine/page_stock.h"

#include "webengine/guarded_page.h"

#include <chrono>

namespace tessaril {

namespace {

constexpr std::chrono::milliseconds beforePreparing(200);
constexpr std::chrono::seconds beforeLettingGo(30);

} // namespace

PageStock::PageStock(QWebEngineProfile& ownProfile) : profile(ownProfile) {
    preparing.setSingleShot(true);
    preparing.setInterval(beforePreparing);
    QObject::connect(&preparing, &QTimer::timeout, &preparing,
                     [this] { next = std::make_unique<GuardedPage>(&profile, nextAddress); });
    letting.setSingleShot(true);
    letting.setInterval(beforeLettingGo);
    QObject::connect(&letting, &QTimer::timeout, &letting, [this] { next.reset(); });
}

PageStock::~PageStock() = default;

std::unique_ptr<GuardedPage> PageStock::take(const QUrl& address) {
    preparing.stop();
    // One whose process has ended meanwhile is of no use.
    if (next && next->home() == address && next->hasLoaded()) return std::move(next);
    return std::make_unique<GuardedPage>(&profile, address);
}

void PageStock::prepareNext(const QUrl& address) {
    if (next && next->home() == address && next->hasLoaded()) return;
    nextAddress = address;
    preparing.start();
}

void PageStock::viewMade() {
    ++views;
    letting.stop();
}

void PageStock::viewGone() {
    if (--views > 0) return;
    preparing.stop();
    letting.start();
}

} // namespace tessaril
