#include "SharedFiles/log/QVException.h"

#include "SharedFiles/log/LogFormat.h"

QString QVException::logException(const QVPlatformException& exception, const char* method, LogController& log) {
  QString text = formatLog("Exception in %s. %@ - %@.", method, exception.name(), exception.reason());
  log.appendLogAndPrint(text);
  return text;
}

bool QVException::didTimeout(const QVPlatformException& exception) {
  return exception.name() == QLatin1String("NSPortTimeoutException");
}
