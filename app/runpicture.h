#pragma once

#include <QImage>
#include <QSize>

struct LessonRun;

/// A small picture of the curves of a run: those of the class, or of the first group where the class has
/// none.
namespace RunPicture {

QImage of(const LessonRun& run, const QSize& size);

} // namespace RunPicture
