#pragma once

#include <QObject>

namespace Kestrun {

// The learner's stored preferences (only the code size, for now), kept in
// the platform's per-user settings and announced when they change, so that
// open editors and code listings follow at once.
class Preferences : public QObject {
    Q_OBJECT

public:
    static constexpr double defaultEditorFontSize = 14;
    static constexpr double minimumEditorFontSize = 11;
    static constexpr double maximumEditorFontSize = 24;

    // The one store of the process.
    static Preferences &shared();

    // Points of the code in the editor and in listings: 11 to 24, whole numbers.
    double editorFontSize() const { return m_editorFontSize; }
    // Clamps to the range and rounds to a whole point; stores at once.
    void setEditorFontSize(double points);

Q_SIGNALS:
    void editorFontSizeChanged(double points);

private:
    Preferences();

    double m_editorFontSize;
};

} // namespace Kestrun
