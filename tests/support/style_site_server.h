#pragma once

#include "support/temporary_folder.h"

#include <QProcess>
#include <QStringList>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace tessaril::testing {

/// A web server on this machine, by http and by https, in a process of its own. What it serves is
/// put there by the test; see style_site.py.
struct StyleSiteServer {
    StyleSiteServer() {
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start("python3", {TESSARIL_STYLE_SITE, folder.path.c_str()});
        while (!process.canReadLine())
            if (!process.waitForReadyRead()) std::abort();
        const QStringList told = QString(process.readLine()).trimmed().split(' ');
        insecure = "http://127.0.0.1:" + told.at(0).toStdString();
        secure = "https://127.0.0.1:" + told.at(1).toStdString();
        authorities = told.at(2).toStdString();
    }
    ~StyleSiteServer() {
        process.closeWriteChannel();
        process.waitForFinished();
    }
    StyleSiteServer(const StyleSiteServer&) = delete;
    StyleSiteServer& operator=(const StyleSiteServer&) = delete;

    /// - path: without a slash at its start
    /// - how: words that say how it is answered
    void put(const std::string& path, const std::string& content, const std::string& how = "") {
        const std::filesystem::path file = folder / path;
        std::filesystem::create_directories(file.parent_path());
        writeFile(file.string() + ".how", how);
        writeFile(file, content);
    }
    std::string http(const std::string& path = "") const { return insecure + path; }
    std::string https(const std::string& path = "") const { return secure + path; }
    /// What was asked for so far: path, tab and user agent.
    std::vector<std::string> requests() const {
        std::ifstream log(folder / "requests.log");
        std::vector<std::string> lines;
        for (std::string line; std::getline(log, line);)
            lines.push_back(line);
        return lines;
    }

    TemporaryFolder folder;
    QProcess process;
    std::string insecure, secure;
    std::filesystem::path authorities; ///< their certificates
};

} // namespace tessaril::testing
