#include "core/fs/Volumes.h"

#include "core/app/Dispatch.h"
#include "core/app/Log.h"
#include "core/app/Translate.h"

#include <QFile>
#include <QPointer>

// GLib's headers use "signals" as a member name, which Qt's keyword macro would break.
#undef signals
#include <gio/gio.h>

namespace {

constexpr Translator tr("Volumes");

struct Outcome
{
    bool ejecting = true; // else unmounting
    bool finished = false;
    GError *error = nullptr;
};

void operationFinished(GObject *source, GAsyncResult *result, gpointer data)
{
    auto *outcome = static_cast<Outcome *>(data);
    if (outcome->ejecting)
        g_mount_eject_with_operation_finish(G_MOUNT(source), result, &outcome->error);
    else
        g_mount_unmount_with_operation_finish(G_MOUNT(source), result, &outcome->error);
    outcome->finished = true;
}

QString messageOf(GError *error)
{
    return error && error->message ? QString::fromUtf8(error->message) : tr("Unknown error");
}

// Runs on a worker whose thread-default main context is `context`: GIO finishes the operation
// there, and this loop turns it until then.
QString ejectNow(const QString &path, GMainContext *context)
{
    GFile *file = g_file_new_for_path(QFile::encodeName(path).constData());
    GError *error = nullptr;
    GMount *mount = g_file_find_enclosing_mount(file, nullptr, &error);
    g_object_unref(file);
    if (!mount) {
        const QString message = messageOf(error);
        if (error)
            g_error_free(error);
        return message;
    }
    Outcome outcome;
    outcome.ejecting = g_mount_can_eject(mount);
    if (!outcome.ejecting && !g_mount_can_unmount(mount)) {
        g_object_unref(mount);
        return tr("This volume cannot be ejected.");
    }
    GMountOperation *operation = g_mount_operation_new();
    if (outcome.ejecting)
        g_mount_eject_with_operation(mount, G_MOUNT_UNMOUNT_NONE, operation, nullptr, operationFinished, &outcome);
    else
        g_mount_unmount_with_operation(mount, G_MOUNT_UNMOUNT_NONE, operation, nullptr, operationFinished, &outcome);
    while (!outcome.finished)
        g_main_context_iteration(context, TRUE);
    g_object_unref(operation);
    g_object_unref(mount);
    if (!outcome.error)
        return {};
    const QString message = messageOf(outcome.error);
    g_error_free(outcome.error);
    return message;
}

} // namespace

namespace Volumes {

void eject(const QString &path, QObject *context, std::function<void(const QString &error)> done)
{
    const QPointer<QObject> guard(context);
    runOnPool(QStringLiteral("Volumes"), [path, guard, done = std::move(done)] {
        GMainContext *mainContext = g_main_context_new();
        g_main_context_push_thread_default(mainContext);
        const QString error = ejectNow(path, mainContext);
        g_main_context_pop_thread_default(mainContext);
        g_main_context_unref(mainContext);
        if (error.isEmpty())
            logDebug(QStringLiteral("Ejected %1").arg(path));
        else
            logError(QStringLiteral("Cannot eject %1: %2").arg(path, error));
        postToGui([guard, done, error] {
            if (guard)
                done(error);
        });
    });
}

} // namespace Volumes
