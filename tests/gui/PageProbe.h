#pragma once

#include "gui/editor/VisualSurface.h"

#include <QElapsedTimer>
#include <QTest>
#include <QWebEnginePage>
#include <QWebEngineScript>
#include <memory>
#include <optional>

// The value of a script run in our own world of the page (not through the surface's queue):
// for facts the document's HTML cannot tell. Invalid when the page does not answer in time.
inline QVariant evaluate(quillora::gui::VisualSurface* page, const QString& script,
                         int timeoutMs = 10000) {
    // The answer may come after a timeout: it goes into a box that outlives this call.
    auto answer = std::make_shared<std::optional<QVariant>>();
    page->page()->runJavaScript(script, QWebEngineScript::ApplicationWorld,
                                [answer](const QVariant& v) { *answer = v; });
    if (!QTest::qWaitFor([&] { return answer->has_value(); }, timeoutMs))
        return {};
    return **answer;
}

// Waits until no picture of the page is still loading, then counts the distinct local pictures
// that loaded (natural width > 0); -1 when the page does not answer.
inline int loadedPictures(quillora::gui::VisualSurface* page) {
    const QString script = QStringLiteral(
        "(function(){var imgs=Array.prototype.slice.call(document.images);"
        "if(imgs.some(function(i){return !i.complete;}))return -2;"
        "var seen={};imgs.forEach(function(i){if(i.naturalWidth>0&&i.src.indexOf('file:')===0)"
        "seen[i.src]=1;});return Object.keys(seen).length;})()");
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 20000) {
        const QVariant answer = evaluate(page, script, 5000);
        if (!answer.isValid())
            return -1;
        if (answer.toInt() >= 0)
            return answer.toInt(); // otherwise still loading: ask again
    }
    return -1;
}
