#include "app/messages/SyncMessages.h"

#include <QStringList>

#include "app/messages/MessageWords.h"
#include "check/ColorInfo.h"
#include "movie/render/IccProfile.h"

namespace {

using check::ColorProperty;
using check::PropertyChange;
using check::PropertyEdit;
using movie::ImageDescription;

/// How much of a value is told: what two values have in common in short may differ at length.
enum class Detail { Short, Long };

QString none() {
  return SyncMessages::tr("none");
}

/// The one of the three that is about the property.
const QString& about(ColorProperty property, const QString& gamma, const QString& color, const QString& profile) {
  return property == ColorProperty::Gamma ? gamma : property == ColorProperty::Color ? color : profile;
}

QString gammaIn(const ImageDescription& description, Detail detail) {
  const auto gamma = description.gamma();
  if (!gamma) return none();
  constexpr double fixedOne = 0x10000;
  return QString::number(*gamma / fixedOne, 'f', detail == Detail::Short ? 2 : 5);
}

QString colorIn(const ImageDescription& description, Detail /*detail*/) {
  const auto color = description.nclc();
  if (!color) return none();
  return QStringLiteral("%1-%2-%3").arg(color->primaries).arg(color->transferFunction).arg(color->matrix);
}

QString profileIn(const ImageDescription& description, Detail detail) {
  const auto profile = description.iccProfile();
  if (!profile) return none();
  const QString name = MessageWords::oneLine(QString::fromStdString(movie::profileDescription(*profile)));
  //: The size of a colour profile
  QString size = SyncMessages::tr("%1 bytes").arg(profile->size());
  if (name.isEmpty()) return size;
  return detail == Detail::Short ? name : QStringLiteral("%1 (%2)").arg(name, size);
}

QString valueIn(const ImageDescription& description, ColorProperty property, Detail detail = Detail::Short) {
  switch (property) {
    case ColorProperty::Gamma:
      return gammaIn(description, detail);
    case ColorProperty::Color:
      return colorIn(description, detail);
    case ColorProperty::ColorSpace:
      break;
  }
  return profileIn(description, detail);
}

QString changeBetween(const ImageDescription& before, const ImageDescription& after, ColorProperty property) {
  const bool isSeen = valueIn(before, property) != valueIn(after, property);
  const Detail detail = isSeen ? Detail::Short : Detail::Long;
  //: %1: before. %2: after
  const QString text = about(property, SyncMessages::tr("gamma %1 → %2"), SyncMessages::tr("colour %1 → %2"),
                             SyncMessages::tr("profile %1 → %2"));
  return text.arg(valueIn(before, property, detail), valueIn(after, property, detail));
}

bool wasThere(const ImageDescription& description, ColorProperty property) {
  return property == ColorProperty::Gamma   ? description.gamma().has_value()
         : property == ColorProperty::Color ? description.nclc().has_value()
                                            : description.iccProfile().has_value();
}

}  // namespace

Message SyncMessages::synced(const WindowState& state, const QString& destPath, const check::SyncOutcome& outcome) {
  if (!outcome.before) {
    //: %1: why, a sentence
    return {MessageKind::Failure, tr("Nothing was synced. %1").arg(WhyNot::sync(state))};
  }
  if (!outcome.writtenBack) return setFailed(destPath, outcome.changes.back());
  std::vector<Message> messages{changed(destPath, outcome)};
  for (const PropertyChange& change : outcome.changes) {
    const bool failed = change.result != movie::noErr && wasThere(*outcome.before, change.property);
    if (failed) messages.push_back(stays(outcome, change));
  }
  return joined(std::move(messages));
}

Message SyncMessages::changed(const QString& destPath, const check::SyncOutcome& outcome) {
  QStringList changes;
  for (const PropertyChange& change : outcome.changes) {
    if (change.result == movie::noErr) changes << changeBetween(*outcome.before, *outcome.after, change.property);
  }
  const QString name = MessageWords::nameOf(destPath);
  if (changes.isEmpty()) return {MessageKind::Information, tr("There was nothing to change in \"%1\".").arg(name)};
  //: %1: a file. %2: what changed, as in "gamma 1.80 → 2.20, colour none → 1-1-1"
  return {MessageKind::Success, tr("Changed \"%1\", not saved yet: %2.").arg(name, changes.join(QStringLiteral(", ")))};
}

/// A removal that fails leaves what the source lacks.
Message SyncMessages::stays(const check::SyncOutcome& outcome, const PropertyChange& change) {
  //: %1: its value
  const QString text = about(change.property, tr("The gamma (%1) stays, although the source has none."),
                             tr("The colour (%1) stays, although the source has none."),
                             tr("The profile (%1) stays, although the source has none."));
  return {MessageKind::Warning, text.arg(valueIn(*outcome.before, change.property))};
}

Message SyncMessages::setFailed(const QString& destPath, const PropertyChange& change) {
  //: %1: a file. %2: the number of an error
  const QString text = about(change.property, tr("Nothing was changed in \"%1\": its gamma cannot be set (error %2)."),
                             tr("Nothing was changed in \"%1\": its colour cannot be set (error %2)."),
                             tr("Nothing was changed in \"%1\": its profile cannot be set (error %2)."));
  return {MessageKind::Failure, text.arg(MessageWords::nameOf(destPath), QString::number(change.result))};
}
