#include "update/Update.h"

#include <QWidget>

Update::Update(QWidget* topLevelWindow, QSettings* store) : QObject(topLevelWindow), m_store(store) {}

bool Update::refusesAction()
{
    if (m_inProgress) {
        emit actionRefused();
    }
    return m_inProgress;
}
