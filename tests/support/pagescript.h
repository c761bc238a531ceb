#pragma once
// Runs a script in a web page and waits for its value. An answer that comes after the wait has
// given up lands in storage that outlives the wait, never in a stack frame that has returned.
// Header only: the tests that include it link Qt WebEngine, the support library does not.
#include <QTest>
#include <QWebEnginePage>
#include <memory>
#include <optional>

namespace PageScript {

// The script's value; nothing when no answer came within timeoutMs.
inline std::optional<QVariant> evaluate(QWebEnginePage *page, const QString &script,
                                        int timeoutMs = 10000)
{
    auto answer = std::make_shared<std::optional<QVariant>>();
    page->runJavaScript(script, [answer](const QVariant &value) { *answer = value; });
    if (!QTest::qWaitFor([&answer] { return answer->has_value(); }, timeoutMs))
        return std::nullopt;
    return *answer;
}

} // namespace PageScript
