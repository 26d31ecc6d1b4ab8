#include "app/widgets/AlertingWidget.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace {

QAccessibleInterface* accessibleAlert(const QString& /*className*/, QObject* object) {
  auto* const widget = qobject_cast<AlertingWidget*>(object);
  return widget == nullptr ? nullptr : new QAccessibleWidget(widget, QAccessible::AlertMessage);
}

}  // namespace

AlertingWidget::AlertingWidget(QWidget* parent) : QWidget(parent) {
  QAccessible::installFactory(accessibleAlert);  // once: Qt passes over what it has
}

void AlertingWidget::alert() {
  QAccessibleEvent event(this, QAccessible::Alert);
  announce(event);
}

void AlertingWidget::announce(QAccessibleEvent& event) {
  QAccessible::updateAccessibility(&event);
}
