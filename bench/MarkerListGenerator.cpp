#include "MarkerListGenerator.h"

#include <QRandomGenerator>

QString generateMarkerList(int count)
{
    static const char *const names[] = {"Wide shot", "Close-up", "Interview – Zoë", "Music in",
                                        "Cutaway",   "Logo",     "Café interior",   "Flash frame"};
    static const char *const comments[] = {
        "Sky too hot, pull highlights down and warm the mids a touch",
        "Client: \"can we lose the sign, the poster & the clock?\"",
        "Line re-recorded,\nuse take 3 from the pickup session",
        "Reflection of the crew in the glass; paint it out before the online",
        "Subtitle: «Ça va très bien», hold for two seconds after the cut"};
    static const char *const colours[] = {"Red",  "Orange", "Yellow", "Green", "Turquoise",
                                          "Blue", "Purple", "Pink",   "White"};
    QRandomGenerator random(42);
    QString text = QStringLiteral("#\tTrack\tName\tComment\tStart\tDuration\tColor\n");
    text.reserve(qsizetype(count) * 110);
    for (int i = 0; i < count; ++i) {
        const int frame = i * 37;
        text += QString::asprintf(
            "%d\tV%d\t%s %d\t%s\t%02d:%02d:%02d:%02d\t00:00:%02d:%02d\t%s\n", i + 1,
            1 + int(random.bounded(3)), names[i % 8], i + 1, comments[random.bounded(5)],
            1 + frame / 90000, (frame / 1500) % 60, (frame / 25) % 60, frame % 25,
            int(random.bounded(10)), int(random.bounded(25)), colours[random.bounded(9)]);
    }
    return text;
}
