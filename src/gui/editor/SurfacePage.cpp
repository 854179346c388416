#include "gui/editor/SurfacePage.h"

#include <QDir>
#include <QWebEngineNewWindowRequest>
#include <QWebEngineSettings>

namespace quillora::gui {

void RefuseNonGet::interceptRequest(QWebEngineUrlRequestInfo& info) {
    if (info.requestMethod() != "GET")
        info.block(true);
}

SurfacePage::SurfacePage(QWebEngineProfile* profile, QObject* parent)
    : QWebEnginePage(profile, parent) {
    QWebEngineSettings* s = settings();
    s->setAttribute(QWebEngineSettings::JavascriptEnabled, false);
    s->setAttribute(QWebEngineSettings::JavascriptCanOpenWindows, false);
    // Only our bridge can use these (no page script runs): without them the engine answers
    // "disabled" to every queryCommandEnabled("copy"/"paste") from script.
    s->setAttribute(QWebEngineSettings::JavascriptCanAccessClipboard, true);
    s->setAttribute(QWebEngineSettings::JavascriptCanPaste, true);
    s->setAttribute(QWebEngineSettings::LocalContentCanAccessRemoteUrls, false);
    s->setAttribute(QWebEngineSettings::PluginsEnabled, false);
    s->setAttribute(QWebEngineSettings::NavigateOnDropEnabled, false);
    s->setAttribute(QWebEngineSettings::ErrorPageEnabled, false);
    s->setAttribute(QWebEngineSettings::FocusOnNavigationEnabled, false);
    setUrlRequestInterceptor(&m_refuseNonGet);
    connect(this, &QWebEnginePage::newWindowRequested, this,
            [this](QWebEngineNewWindowRequest& request) {
                if (request.isUserInitiated())
                    emit linkClicked(request.requestedUrl());
            });
}

SurfacePage::~SurfacePage() {
    setUrlRequestInterceptor(nullptr);
}

bool SurfacePage::isExpected(const QUrl& url) const {
    return url.isLocalFile() && m_expected.isLocalFile() && url.query() == m_expected.query() &&
           QDir::cleanPath(url.toLocalFile()) == QDir::cleanPath(m_expected.toLocalFile());
}

bool SurfacePage::acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) {
    if (isMainFrame && isExpected(url))
        return true;
    if (type == NavigationTypeLinkClicked && isMainFrame)
        emit linkClicked(url);
    return false;
}

void SurfacePage::javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level,
                                           const QString& message, int line,
                                           const QString& source) {
    // Only our bridge can write here; its errors are programming errors worth seeing.
    if (level == ErrorMessageLevel)
        qWarning("VisualSurface bridge: %s (%s:%d)", qPrintable(message), qPrintable(source), line);
}

} // namespace quillora::gui
