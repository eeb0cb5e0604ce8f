#pragma once

#include "core/fs/ZQStandardFile.h"
#include "core/model/FileFlag.h"
#include "core/model/PXFileForward.h"

#include <QDateTime>
#include <QSizeF>
#include <QStringList>
#include <QVariantMap>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

// The program's record of a file, folder, volume or application: the file object plus facts
// computed on first use and kept until a file event clears them (its kind, size and dates as
// display texts, and image facts read once from the image's properties).
//
// Every listing of the file layer hands out PXFile objects (the factory is installed when this
// type is first used). Caches may be filled from any thread: a worker thread sorting by a fact
// while the GUI thread reads another is safe. Slow work (reading image properties) runs outside
// the record's lock, so a reader never waits for another thread's disk access.
class PXFile : public ZQStandardFile
{
public:
    static PXFilePtr fileForPath(const QString &path);
    static PXFilePtr fileForNativePath(const QByteArray &nativePath);
    static PXFilePtr from(const ZQFilePtr &file); // every file object is a PXFile
    // Makes the file layer hand out PXFile objects. Idempotent; called by fileForPath too.
    static void install();

    static constexpr quint8 notComputed = 255;

    // Kinds. A placeholder is never of any kind.
    bool isImage() const;
    bool isAudio() const;
    bool isVideo() const;
    bool isText() const;
    bool isMedia() const { return isImage() || isVideo() || isAudio(); }
    bool isPanorama() const;
    QString genericTypeString() const;
    QString linkTypeString() const;
    QString kindString() const; // the type's description, "JPEG image"

    // Sizes and dates as display texts (empty for a placeholder).
    qint64 fileSize() const; // 0 for a placeholder or a plain folder
    QString fileSizeString() const;
    QString modificationDateString() const;
    QString creationDateString() const;
    QString dateAddedString() const;
    // Fills its own slot but answers the creation date slot, empty until creationDateString was asked.
    QString accessDateString() const;
    QString bestCreationDateString() const;

    // Names.
    QString parentDisplayName() const;
    QString extensionlessFileName() const;
    QString fileNameExtension() const;
    // The name's collation key for the name order, computed once (names never change).
    const QByteArray &nameSortKey() const;

    // Reads the property dictionary of image 0 of a file (keys in ImagePropertyKeys.h) into
    // `properties`: false, with a reason in `error`, when the file cannot be read as an image.
    // `typeHint` is the file's type identifier. Called from any thread.
    using ImagePropertiesReader = bool (*)(const QByteArray &nativePath, const QString &typeHint,
                                           QVariantMap *properties, QString *error);
    // The reader of image facts lives above this layer: every program installs it at start-up
    // (ImageSource::install()). Asking for an image fact before that is a fatal error, so that no
    // program silently shows images without their facts.
    static void setImagePropertiesReader(ImagePropertiesReader reader);
    static ImagePropertiesReader imagePropertiesReader();

    // Image facts, read once from the image properties (empty for what is not an image).
    bool findAllImageInfo() const;
    QVariantMap imageProperties() const;
    // Keeps `properties` as the image properties when none are cached yet: a reader that has just
    // read them (off the GUI thread) spares the record a second read on first use.
    void cacheImageProperties(const QVariantMap &properties) const;
    int orientation() const; // EXIF orientation 1..8; 1 when absent
    QSizeF trueDimensions() const; // as stored
    QSizeF dimensions() const; // turned upright
    double dimensionsWidth() const;
    double dimensionsHeight() const;
    double megapixels() const;
    int generalOrientation() const; // portrait 1, square 2, landscape 3; 0 when unknown
    QString dimensionsString() const;
    QString megapixelString() const;
    QString generalOrientationString() const;
    QString imageDepthString() const;
    QString ICCProfileString() const;
    std::optional<qint64> ISO() const;
    QString ISOString() const;
    std::optional<double> exposureTime() const;
    QString exposureTimeString() const;
    std::optional<double> fNumber() const;
    QString fNumberString() const;
    std::optional<double> focalLength() const;
    QString focalLengthString() const;
    QString resolutionString() const;
    QString cameraModelString() const;
    QDateTime EXIFDate() const;
    QString EXIFDateString() const;

    // Colour label, from the "user.xdg.tags" extended attribute shared with file managers
    // (ColorLabels), read once and again after the file's attributes change.
    int finderLabelSortValue() const; // 0 without a label
    QString finderLabelTitle() const;
    // Gives the file the label `value` (0: none), keeping its other tags, and caches it. Writes
    // the disk: not on the GUI thread. False with a message when the file cannot take it.
    bool setFinderLabel(int value, QString *error);

    // The flag or reject kept on disk for the file (FlagStore), read once; FlagManager sets the
    // cached value when the user marks the file, before the mark reaches the disk.
    FileFlag storedFlag() const;
    void setCachedStoredFlag(FileFlag flag) const;
    // Reads the label and the stored flag into the record where they are not cached yet, so
    // that views ask nothing of the disk. For worker threads (the grid's visible cells).
    void warmAttributes() const;
    // What is cached, without reading the disk (the last known values, also while they are read
    // again after a change): for painting on the GUI thread.
    std::optional<int> cachedFinderLabelSortValue() const;
    std::optional<FileFlag> cachedStoredFlag() const;
    bool hasCachedAttributes() const;

    static const QStringList &editableMetadataImageTypes();
    bool hasEditableImageMetadata() const;

    // The default application for the file, and the one for editing it, as records of their
    // .desktop files; null for a placeholder or when there is none.
    PXFilePtr preferredApplication() const;
    PXFilePtr editorApplication() const;

    // Counts a folder's children; files and folders pass their filter (or there is none).
    // Uses the live subscription of the folder when one is loaded, else lists the folder once.
    bool countOfFiles(int *files, int *folders, int *total, const std::function<bool(const PXFile &)> &fileFilter = {},
                      const std::function<bool(const PXFile &)> &directoryFilter = {}) const;

    // Clears what the event made stale and answers the names of the cleared properties, in the
    // order observers are told of them.
    QStringList changedKeysForEvent(const ZQFileEvent &event);
    void updateForEvent(const ZQFileEvent &event) override;

private:
    friend class PXFileFactory;
    PXFile(const QByteArray &nativePath, ZQEntryKind kind);

    struct ImageFacts;
    // Fills the group once; a copy of the pointer stays valid when an event clears the cache.
    std::shared_ptr<const ImageFacts> imageFacts() const;
    // Kind flags are read for every file of a folder when counting; atomics keep that lock-free.
    quint8 kindFlag(std::atomic<quint8> &slot, bool (PXFile::*test)() const) const;
    bool testImage() const;
    bool testAudio() const;
    bool testVideo() const;
    bool testText() const;
    QString cachedDateString(std::optional<QString> &slot, QDateTime (ZQStandardFile::*date)() const) const;

    mutable std::atomic<quint8> m_isImage = notComputed;
    mutable std::atomic<quint8> m_isText = notComputed;
    mutable std::atomic<quint8> m_isVideo = notComputed;
    mutable std::atomic<quint8> m_isAudio = notComputed;
    mutable quint8 m_imageMetadataEditable = notComputed;
    mutable int m_imageOrientation = -1;
    mutable std::optional<qint64> m_fileSize;
    mutable QString m_fileSizeString;
    mutable std::optional<QString> m_modificationDateString;
    mutable std::optional<QString> m_creationDateString;
    mutable std::optional<QString> m_dateAddedString;
    mutable std::optional<QString> m_accessDateString;
    mutable std::optional<QVariantMap> m_imageProperties;
    mutable std::shared_ptr<const ImageFacts> m_imageFacts;
    mutable QByteArray m_nameSortKey;
    mutable std::optional<int> m_labelValue;
    mutable std::optional<FileFlag> m_storedFlag;
    // The file's attributes changed: the values above are the last known, to be read again.
    mutable bool m_labelStale = false;
    mutable bool m_storedFlagStale = false;
};
