#pragma once

#include <QWidget>

namespace Kestrun {

class AppModel;
class PublishedActions;
class SplitterMemory;
struct Lesson;

namespace LessonView {

// The screen for a lesson: a code lesson for one with tests, a reading
// lesson otherwise. A new screen per lesson, so no view state carries over.
QWidget *create(AppModel &model, const Lesson &lesson, PublishedActions &actions, SplitterMemory &memory,
                QWidget *parent = nullptr);

} // namespace LessonView

} // namespace Kestrun
