#pragma once

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace tessaril::testing {

/// A web server on this machine, by http and by https, in a process of its own. What it serves is
/// put there by the test; see style_site.py.
class StyleSiteServer {
public:
    StyleSiteServer() {
        server.setProgram("python3");
        server.setArguments({TESSARIL_STYLE_SITE, folder.path()});
        server.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        server.start();
        while (!server.canReadLine())
            if (!server.waitForReadyRead()) std::abort();
        const QStringList told = QString(server.readLine()).trimmed().split(' ');
        if (told.size() != 3) std::abort();
        insecure = "http://127.0.0.1:" + told[0].toStdString();
        secure = "https://127.0.0.1:" + told[1].toStdString();
        authorities = told[2].toStdString();
    }
    ~StyleSiteServer() {
        server.closeWriteChannel();
        server.waitForFinished();
    }
    StyleSiteServer(const StyleSiteServer&) = delete;
    StyleSiteServer& operator=(const StyleSiteServer&) = delete;

    /// - path: without a slash at its start
    /// - how: words that say how it is answered
    void put(const std::string& path, const std::string& content, const std::string& how = "") {
        const std::filesystem::path file = root() / path;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file.string() + ".how") << how;
        std::ofstream(file, std::ios::binary) << content;
    }

    std::string http(const std::string& path = "") const { return insecure + path; }
    std::string https(const std::string& path = "") const { return secure + path; }

    /// What was asked for so far: path, tab and user agent.
    std::vector<std::string> requests() const {
        std::ifstream log(root() / "requests.log");
        std::vector<std::string> lines;
        for (std::string line; std::getline(log, line);)
            lines.push_back(line);
        return lines;
    }

    const std::filesystem::path& certificateAuthorities() const { return authorities; }

private:
    std::filesystem::path root() const { return folder.path().toStdString(); }

    QTemporaryDir folder;
    QProcess server;
    std::string insecure, secure;
    std::filesystem::path authorities;
};

} // namespace tessaril::testing
