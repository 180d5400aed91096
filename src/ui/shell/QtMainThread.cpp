#include "ui/shell/QtMainThread.h"

#include <QThread>

namespace kelvaro {

void QtMainThread::post(std::function<void()> job) {
    QMetaObject::invokeMethod(&receiver_, std::move(job), Qt::QueuedConnection);
}

bool QtMainThread::isCurrent() const {
    return QThread::currentThread() == receiver_.thread();
}

} // namespace kelvaro
