#include "update/Update.h"

#include <QWidget>

Update::Update(QWidget* topLevelWindow, QSettings* store) : QObject(topLevelWindow), m_store(store) {}
