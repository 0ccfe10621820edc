#pragma once

#include <QByteArray>
#include <QHash>
#include <QObject>

class QSplitter;

namespace Kestrun {

// Where the learner left the dividers of the lesson screens, kept for the
// session so that the next lesson opens with them in the same place.
class SplitterMemory : public QObject {
    Q_OBJECT

public:
    explicit SplitterMemory(QObject *parent = nullptr);

    // Restores the splitter from what was kept under the key, and keeps its
    // position under that key whenever the learner moves it.
    void attach(QSplitter *splitter, const QString &key);

private:
    QHash<QString, QByteArray> m_states;
};

} // namespace Kestrun
