// Opens the batch renamer on a folder of camera-named files and types into a rule field at the
// speed of a quick typist, while a 1 ms timer measures the gaps between turns of the event loop.
// Reports the longest stall while the folder is scanned into the list and while typing (with what
// the GUI thread did meanwhile), the stalls over one frame, the time from the last key to the last
// name shown, and, for comparison, what recomputing every name on the GUI thread at once costs.
// Usage: bench_rename_ui_event FOLDER [--keys N] [--hold SECONDS] [--default-size]
//   --hold keeps the window open afterwards (for screenshots); --default-size opens the window at
//   the size a first opening has, rather than 1280×800.
#include "StallMeter.h"
#include "core/imaging/ImageSource.h"
#include "core/model/PXFile.h"
#include "core/rename/PXBatchOutlineModel.h"
#include "core/rename/PXFileRenamer.h"
#include "ui/rename/FileRenamerWindow.h"
#include "ui/rename/RenameRuleEditor.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSettings>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace {

// The rule set of someone sorting a holiday: the camera's name replaced by a text being typed,
// then a running number, and the date the picture was taken in front.
void buildRules(RenameRuleEditor *editor)
{
    namespace C = PXRenameConstant;
    const auto row = [](std::initializer_list<std::pair<int, const char *>> rules) {
        QList<PXRenameRule> list;
        for (const auto &[constant, text] : rules)
            list.append({constant, QString::fromUtf8(text)});
        return list;
    };
    editor->setRules({PXRenameRow{PXRenameRow::compound,
                                  row({{C::label, "In"}, {C::searchFilename, "Filename"}}),
                                  {PXRenameRow{PXRenameRow::simple,
                                               row({{C::replace, "Replace"},
                                                    {C::replaceEntirely, "Entirely"},
                                                    {C::label, "with"},
                                                    {C::addCharacters, "Characters"},
                                                    {C::replacementCharacters, ""}}),
                                               {}},
                                   PXRenameRow{PXRenameRow::simple,
                                               row({{C::insert, "Insert"},
                                                    {C::insertAtEnd, "At End"},
                                                    {C::addSequence, "Sequence"},
                                                    {C::label, "starting with"},
                                                    {C::initialSequenceValue, "1"},
                                                    {C::label, "in format"},
                                                    {C::sequenceFormat00001, "00001"}}),
                                               {}},
                                   PXRenameRow{PXRenameRow::simple,
                                               row({{C::insert, "Insert"},
                                                    {C::insertAtBeginning, "At Beginning"},
                                                    {C::addDateTaken, "Date Taken"},
                                                    {C::label, "in unicode date format"},
                                                    {C::dateFormatValue, "yyyy-MM-dd "}}),
                                               {}}}}});
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    ImageSource::install();
    const QStringList args = app.arguments();
    if (args.size() < 2) {
        std::fprintf(stderr, "usage: %s FOLDER [--keys N] [--hold SECONDS]\n", argv[0]);
        return 2;
    }
    int keys = 24;
    int hold = -1;
    bool defaultSize = false;
    for (int i = 2; i < args.size(); ++i) {
        if (args[i] == QLatin1String("--default-size"))
            defaultSize = true;
        else if (args[i] == QLatin1String("--keys") && i + 1 < args.size())
            keys = args[++i].toInt();
        else if (args[i] == QLatin1String("--hold") && i + 1 < args.size())
            hold = args[++i].toInt();
    }
    // The window's presets and frame go to a folder of the run's own.
    QTemporaryDir settingsDir;
    QSettings settings(settingsDir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    FileRenamerWindow window(&settings);
    if (!defaultSize)
        window.resize(1280, 800);
    window.show();
    PXFileRenamer &renamer = window.renamer();
    window.depthMenu()->setCurrentIndex(window.depthMenu()->findData(1));
    Q_EMIT window.depthMenu()->activated(window.depthMenu()->currentIndex());
    buildRules(window.ruleEditor());

    QTextStream out(stdout);
    QElapsedTimer clock;
    clock.start();
    // The scan posts its batches to the GUI thread, which lists them and rebuilds the rows.
    auto scanGaps = std::make_shared<StallMeter>();
    window.addFilesToRename({PXFile::fileForPath(args[1])});

    const QString typed = QStringLiteral("Lisbon trip with Ana and Rui, summer 2024 ").left(keys);
    auto *poll = new QTimer(&app);
    poll->setInterval(5);
    QObject::connect(poll, &QTimer::timeout, &app, [&] {
        if (renamer.workInProgress() || renamer.isUpdatePending())
            return;
        poll->stop();
        scanGaps->stop();
        out << "files: " << renamer.arrangedItems().size() << ", listed with their names in " << clock.elapsed()
            << " ms\n"
            << "longest event-loop stall while the folder was scanned in: " << scanGaps->longestUs() / 1000.0
            << " ms wall, " << scanGaps->longest().runningUs / 1000.0 << " ms of it GUI-thread CPU, "
            << scanGaps->longest().waitingUs / 1000.0 << " ms waiting for a core\n"
            << "stalls over 16 ms while scanning: " << scanGaps->overOneFrame() << " (of " << scanGaps->turns()
            << " turns)\n";
        out.flush();

        // The replacement text: the fifth step of the first nested row.
        QLineEdit *field = nullptr;
        for (RenameRuleRowWidget *row : window.ruleEditor()->rows()) {
            if (row->rowType() == PXRenameRow::simple) {
                field = qobject_cast<QLineEdit *>(row->controlAt(4));
                break;
            }
        }
        if (!field) {
            out << "no rule field to type into\n";
            QCoreApplication::exit(1);
            return;
        }
        field->setFocus();

        auto gaps = std::make_shared<StallMeter>();

        // 110 ms a key: a quick typist; the 0.2 s coalescing lets some computations start and
        // be cancelled by the next keys, as happens when typing.
        auto *typist = new QTimer(&app);
        typist->setTimerType(Qt::PreciseTimer);
        typist->setInterval(110);
        auto next = std::make_shared<int>(0);
        auto lastKey = std::make_shared<QElapsedTimer>();
        QObject::connect(typist, &QTimer::timeout, &app, [&, typist, gaps, next, lastKey, field] {
            if (*next < typed.size()) {
                const QChar c = typed[*next];
                QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(c));
                QKeyEvent release(QEvent::KeyRelease, 0, Qt::NoModifier, QString(c));
                QCoreApplication::sendEvent(field, &press);
                QCoreApplication::sendEvent(field, &release);
                lastKey->start();
                ++*next;
                return;
            }
            if (renamer.isUpdatePending())
                return;
            typist->stop();
            gaps->stop();
            const qint64 latency = lastKey->elapsed();
            const auto items = renamer.arrangedItems();
            const QString sample = items.size() > 1 ? items[1]->potentialName() : QString();
            // The same computation on the GUI thread, as it would run without the worker.
            QElapsedTimer sync;
            sync.start();
            renamer.updateNow();
            const qint64 syncMs = sync.elapsed();
            out << "typed " << typed.size() << " keys into a rule field, one every 110 ms\n"
                << "longest event-loop stall while typing: " << gaps->longestUs() / 1000.0 << " ms wall, "
                << gaps->longest().runningUs / 1000.0 << " ms of it GUI-thread CPU, "
                << gaps->longest().waitingUs / 1000.0 << " ms waiting for a core\n"
                << "stalls over 16 ms: " << gaps->overOneFrame() << " (of " << gaps->turns() << " turns)\n"
                << "last key to every name shown: " << latency << " ms\n"
                << "every name recomputed at once on the GUI thread (for comparison): " << syncMs << " ms\n"
                << "a name: " << sample << "\n";
            out.flush();
            if (hold >= 0)
                QTimer::singleShot(hold * 1000, &app, &QCoreApplication::quit);
            else
                QCoreApplication::quit();
        });
        typist->start();
    });
    poll->start();
    QTimer::singleShot(300000, &app, [&] {
        out << "timed out\n";
        QCoreApplication::exit(1);
    });
    return app.exec();
}
