#include "QsLog2_1_0/DestinationFactory.h"

#include "QsLog2_1_0/DebugOutputDestination.h"
#include "QsLog2_1_0/FileDestination.h"
#include "QsLog2_1_0/RotationStrategy.h"

namespace QsLogging {

DestinationPtr makeFileDestination(const QString& path, bool rotationEnabled, qint64 maxSizeBytes,
                                   int maxOldLogCount)
{
    if (!rotationEnabled) {
        return QSharedPointer<FileDestination>::create(path, QSharedPointer<NullRotationStrategy>::create());
    }
    const auto strategy = QSharedPointer<SizeRotationStrategy>::create();
    strategy->setMaximumSize(maxSizeBytes);
    strategy->setBackupCount(maxOldLogCount);
    return QSharedPointer<FileDestination>::create(path, strategy);
}

DestinationPtr makeDebugOutputDestination()
{
    return QSharedPointer<DebugOutputDestination>::create();
}

DestinationPtr makeFunctorDestination(FunctorDestination::LogFunction function)
{
    return QSharedPointer<FunctorDestination>::create(function);
}

DestinationPtr makeFunctorDestination(QObject* receiver, const char* slotSignature)
{
    const auto destination = QSharedPointer<FunctorDestination>::create();
    QObject::connect(destination.data(), SIGNAL(logMessageReady(QString, int)), receiver, slotSignature,
                     Qt::QueuedConnection);
    return destination;
}

} // namespace QsLogging
