// Qt's everyday headers without windows, beside the standard ones.
#include <QByteArray>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>

#include "cmake/precompiled/Standard.h"
