// Any bytes that may stand in a lesson given to Open.
#include "persistence/lesson.h"
#include "fuzz/application.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, size_t size)
{
    ensureApplication();
    Lesson lesson;
    QString reason;
    const auto file = QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), int(size));
    constexpr qint64 most = 1 << 18; // bombs go off sooner, and more of the others have their turn
    if (!LessonFile::read(file, &lesson, &reason, most) && reason.isEmpty())
        abort(); // a refusal always says why
    return 0;
}
