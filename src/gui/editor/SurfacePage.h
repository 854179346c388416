#pragma once

#include <QUrl>
#include <QWebEnginePage>
#include <QWebEngineUrlRequestInterceptor>

namespace quillora::gui {

// Refuses every request other than GET (form posts, pings).
class RefuseNonGet : public QWebEngineUrlRequestInterceptor {
public:
    void interceptRequest(QWebEngineUrlRequestInfo& info) override;
};

// The security baseline of the visual page and the preview, in one place. A message is outside
// input: it may carry scripts, forms, refresh tags and links to anywhere. So:
//  * page JavaScript is off; only our bridge runs, in its own world (ApplicationWorld);
//  * the only navigation is the load of our own working file (expect()); link clicks are
//    reported and refused, new windows never open, dropped files never navigate;
//  * requests other than GET are refused.
class SurfacePage : public QWebEnginePage {
    Q_OBJECT
public:
    SurfacePage(QWebEngineProfile* profile, QObject* parent);
    ~SurfacePage() override;

    // The one address the page may load: our working file, with the load's generation in its
    // query so an earlier load of the same file is told apart.
    void expect(const QUrl& url) { m_expected = url; }
    bool isExpected(const QUrl& url) const;

signals:
    void linkClicked(const QUrl& url);

protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) override;
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString& message,
                                  int line, const QString& source) override;

private:
    QUrl m_expected;
    RefuseNonGet m_refuseNonGet;
};

} // namespace quillora::gui
