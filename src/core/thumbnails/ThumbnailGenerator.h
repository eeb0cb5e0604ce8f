#pragma once

#include <QObject>

#include <memory>

// Stand-in until the thumbnail generator lands: items render on a pool by themselves.
class ThumbnailGenerator : public QObject
{
public:
    enum class Priority { cancelled = 0, low = 1, medium = 2, high = 3 };
    class Request;
    using RequestPtr = std::shared_ptr<Request>;
    static ThumbnailGenerator &shared();
    void add(const RequestPtr &) {}
    void remove(const RequestPtr &) {}
    void finished(const RequestPtr &) {}
};
