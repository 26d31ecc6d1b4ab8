#include "app/MainInterface.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QSplitter>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <initializer_list>

#include "app/messages/WindowMessages.h"
#include "app/scan/ScanStrip.h"
#include "app/scan/TimelineView.h"
#include "app/verdict/FactTable.h"
#include "app/verdict/VerdictStrip.h"
#include "app/widgets/MessageLine.h"
#include "app/widgets/PathField.h"
#include "app/widgets/ResultsView.h"
#include "app/widgets/RoomyButton.h"
#include "app/widgets/TransportBar.h"

namespace {

constexpr int margin = 12, spacing = 8, narrowMargin = 4;
constexpr QSize smallestWindow(960, 640), usualWindow(1200, 780);
const QList<int> usualHeights{370, 374};  // movies of 16:9 fill their views

/// Rows that stand in it have its spacing, too.
QVBoxLayout* columnIn(QWidget* parent) {
  auto* const column = new QVBoxLayout(parent);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(spacing);
  return column;
}

/// The widest of the words that stand before the paths, in which both have room.
int widest(const QFontMetrics& metrics, std::initializer_list<QString> words) {
  int width = 0;
  for (const QString& word : words) width = std::max(width, metrics.horizontalAdvance(word));
  return width;
}

QLineEdit* timecodeField(const QString& name) {
  auto* const field = new QLineEdit;
  field->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  field->setAlignment(Qt::AlignCenter);
  field->setFixedWidth(field->fontMetrics().horizontalAdvance(QStringLiteral("00:00:00;00")) + 2 * spacing + margin);
  //: %1: the side, "Source" or "Destination"; so in all that begins with it. Screen readers say these.
  field->setAccessibleName(MainInterface::tr("%1: timecode").arg(name));
  field->setToolTip(MainInterface::tr("Type a timecode and press Return to go there"));
  return field;
}

}  // namespace

MainInterface::MainInterface(const MakeView& makeView) : window_(std::make_unique<QVQTWindow>()) {
  window_->setWindowTitle(WindowMessages::title({}, {}));
  menus = MenuBar::in(*window_);
  makePreferences();
  source = makeSide({tr("Source"), tr("Drop the source movie here"), tr("Path of the source movie")}, makeView());
  dest = makeSide({tr("Destination"), tr("Drop the destination movie here"), tr("Path of the destination movie")},
                  makeView());
  activeView_ = source.movieView;
  layOut();
  orderFocus();
  followFocus();
  tellWhyNot({});
  showScanning({});
  QObject::connect(window_.get(), &QVQTWindow::fullScreenDidChange, window_.get(),
                   [this](bool isFullScreen) { giveRoomToPictures(isFullScreen); });
  window_->setMinimumSize(smallestWindow);
  window_->resize(usualWindow);
  source.movieView->setFocus();
}

MainInterface::~MainInterface() = default;

void MainInterface::makePreferences() {
  preferences = new QDialog(window_.get());
  preferences->setObjectName(QStringLiteral("preferences"));
  preferences->setWindowTitle(tr("Preferences"));
  qcLoggingCheck = new QCheckBox(tr("&Send anonymous usage data to Quorvane"));
  qcLoggingCheck->setObjectName(QStringLiteral("qcLoggingCheck"));
  auto* const note =
      new QLabel(tr("It is anonymous: when Lumacheck starts, and on which system.\n"
                    "Nothing of your movies, nor their names."));
  note->setIndent(qcLoggingCheck->style()->pixelMetric(QStyle::PM_IndicatorWidth) +
                  qcLoggingCheck->style()->pixelMetric(QStyle::PM_CheckBoxLabelSpacing));
  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  QObject::connect(buttons, &QDialogButtonBox::rejected, preferences, &QDialog::reject);
  auto* const column = new QVBoxLayout(preferences);
  column->setSizeConstraint(QLayout::SetFixedSize);
  column->addWidget(qcLoggingCheck);
  column->addWidget(note);
  column->addSpacing(column->spacing());
  column->addWidget(buttons);
}

SideInterface MainInterface::makeSide(const SideTexts& texts, QVMovieView* movieView) {
  const QString& name = texts.name;
  SideInterface side;
  side.filenameText = new PathField;
  side.filenameText->setAccessibleName(tr("%1: path").arg(name));
  side.filenameText->setPlaceholderText(texts.pathHint);
  side.browseBtn = roomyButton(tr("Browse…"));
  side.browseBtn->setAccessibleName(tr("%1: browse").arg(name));
  side.movieView = movieView;
  side.movieView->setAccessibleName(tr("%1: movie").arg(name));
  side.movieView->setHint(texts.dropHint);
  side.transport = new TransportBar(side.movieView, name);
  side.timecodeText = timecodeField(name);
  side.transport->addWidget(side.timecodeText);
  return side;
}

QWidget* MainInterface::sidePanel(const SideInterface& side, const QString& name) {
  auto* const panel = new QWidget;
  auto* const column = columnIn(panel);
  auto* const row = new QHBoxLayout;
  auto* const label = new QLabel(name);
  label->setBuddy(side.filenameText);
  label->setMinimumWidth(widest(label->fontMetrics(), {tr("Source"), tr("Destination")}));
  row->addWidget(label);
  row->addWidget(side.filenameText, 1);
  row->addWidget(side.browseBtn);
  column->addLayout(row);
  column->addWidget(side.movieView, 1);
  column->addWidget(side.transport);
  besidePictures_ << label << side.filenameText << side.browseBtn;
  return panel;
}

QWidget* MainInterface::linkColumn() {
  //: Over the switch that links the playheads
  linkLabel = new QLabel(tr("Link"));
  linkLabel->setAlignment(Qt::AlignHCenter);
  linkBtn = new QCheckBox;
  linkBtn->setAccessibleName(tr("Link the playheads"));
  swapBtn = roomyButton(tr("Swap"));
  swapBtn->setAccessibleName(tr("Swap source and destination"));
  auto* const panel = new QWidget;
  auto* const column = columnIn(panel);
  column->addStretch();
  column->addWidget(linkLabel);
  column->addWidget(linkBtn, 0, Qt::AlignHCenter);
  column->addSpacing(spacing);
  column->addWidget(swapBtn);
  column->addStretch();
  besidePictures_ << panel;
  return panel;
}

QWidget* MainInterface::bottomPanel() {
  checkBtn = roomyButton(tr("Check"));
  window_->setDefaultButton(checkBtn);
  scanBtn = roomyButton(tr("Cancel Scan"));  // with room for both of its texts
  syncBtn = roomyButton(tr("Sync Metadata"));
  saveBtn = roomyButton(tr("Save"));
  saveAsBtn = roomyButton(tr("Save As…"));
  scanStrip = new ScanStrip;
  scanStrip->hide();
  verdictStrip = new VerdictStrip;
  resultsView = new ResultsView;
  resultsView->setAccessibleName(tr("Results"));
  constexpr int fewestLines = 3;
  resultsView->setMinimumHeight(fewestLines * resultsView->fontMetrics().lineSpacing() + 2 * spacing);
  auto* const panel = new QWidget;
  auto* const column = columnIn(panel);
  auto* const row = new QHBoxLayout;
  row->addWidget(checkBtn);
  row->addWidget(scanBtn);
  row->addWidget(syncBtn);
  row->addStretch();
  row->addWidget(saveBtn);
  row->addWidget(saveAsBtn);
  column->addWidget(scanStrip);
  column->addLayout(row);
  column->addWidget(verdictStrip);
  column->addWidget(resultsView, 1);
  besidePictures_ << panel;
  return panel;
}

void MainInterface::layOut() {
  auto* const movies = new QWidget;
  auto* const row = new QHBoxLayout(movies);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(margin);
  row->addWidget(sidePanel(source, tr("Source")), 1);
  row->addWidget(linkColumn());
  row->addWidget(sidePanel(dest, tr("Destination")), 1);

  auto* const splitter = new QSplitter(Qt::Vertical);
  splitter->addWidget(movies);
  splitter->addWidget(bottomPanel());
  splitter->setChildrenCollapsible(false);
  splitter->setSizes(usualHeights);
  splitter->setStretchFactor(0, 2);
  splitter->setStretchFactor(1, 1);
  splitter->setHandleWidth(margin);

  auto* const content = new QWidget;
  auto* const column = new QVBoxLayout(content);
  column->setContentsMargins(margin, margin, margin, spacing);
  column->setSpacing(spacing);
  column->addWidget(splitter, 1);
  column->addWidget(messageLine = new MessageLine);
  window_->setCentralWidget(content);
}

/// What comes after a timecode is its movie, which is what the keys are for once one was typed.
void MainInterface::orderFocus() {
  QWidget* before = nullptr;
  const auto next = [&before](std::initializer_list<QWidget*> controls) {
    for (QWidget* control : controls) {
      if (before != nullptr) QWidget::setTabOrder(before, control);
      before = control;
    }
  };
  const auto side = [&next](const SideInterface& each) {
    const TransportBar& bar = *each.transport;
    next({each.filenameText, each.browseBtn, bar.stepBackButton, bar.playButton, bar.stepForwardButton, bar.scrubber,
          bar.muteButton, bar.volumeSlider, each.timecodeText, each.movieView});
  };
  side(source);
  next({linkBtn, swapBtn});
  side(dest);
  next({&scanStrip->timeline(), checkBtn, scanBtn, syncBtn, saveBtn, saveAsBtn});
  for (const VerdictAction action : verdictActions) next({&verdictStrip->button(action)});
  next({&verdictStrip->facts(), resultsView, &messageLine->words()});
}

void MainInterface::followFocus() {
  QObject::connect(qApp, &QApplication::focusChanged, window_.get(), [this](QWidget* /*old*/, QWidget* now) {
    for (const SideInterface* side : {&source, &dest}) {
      const bool inSide = now != nullptr && (now == side->movieView || side->transport->isAncestorOf(now) ||
                                             now == side->filenameText || now == side->browseBtn);
      if (inSide) activeView_ = side->movieView;
    }
  });
}

/// The transports and the message line stay. A focus that would go with its control goes to the movie.
void MainInterface::giveRoomToPictures(bool all) {
  const QWidget* const focused = window_->focusWidget();
  QVMovieView* const active = activeView_;
  for (QWidget* each : besidePictures_) each->setVisible(!all);
  const int around = all ? narrowMargin : margin;
  window_->centralWidget()->layout()->setContentsMargins(around, around, around, all ? narrowMargin : spacing);
  if (focused != nullptr && !focused->isVisible()) active->setFocus();
}

void MainInterface::tellWhyNot(const WindowState& state) {
  const auto tell = [](QWidget& control, const QString& does, const QString& whyNot) {
    control.setToolTip(WhyNot::inToolTip(does, whyNot));
  };
  tell(*linkBtn,
       state.isMapped ? tr("Both movies move to the same pictures, as the scan has found them")
                      : tr("Movies of the same length move together"),
       WhyNot::link(state));
  tell(*swapBtn, tr("Source becomes destination, and the other way round"), WhyNot::swap(state));
  tell(*checkBtn, tr("Compares the two frames shown"), WhyNot::check(state));
  tell(*scanBtn,
       state.isScanning ? tr("Ends the scan; what was found until then stays")
                        : tr("Compares all frames of both movies, wherever they lie"),
       WhyNot::scan(state));
  //: The report is in English whatever the language, and calls this button "Sync Metadata": say so in a translation.
  tell(*syncBtn, tr("Copies the source's colour metadata onto the destination"), WhyNot::sync(state));
  tell(*saveBtn, tr("Saves the destination's metadata in place"), WhyNot::save(state));
  tell(*saveAsBtn, tr("Saves the destination as a self-contained copy"), WhyNot::saveAs(state));
}

void MainInterface::showScanning(const WindowState& state) {
  const bool canScan = WhyNot::scan(state).isEmpty();
  scanBtn->setText(state.isScanning ? tr("Cancel Scan") : tr("Scan"));
  scanBtn->setEnabled(canScan);
  menus.scan->setText(state.isScanning ? MenuBar::tr("C&ancel Scan") : MenuBar::tr("Sc&an"));
  menus.scan->setEnabled(canScan);
}

void MainInterface::addMovieKeys(KeyTable& keys) const {
  const auto on = [this](void (*act)(QVMovieView&)) { return [this, act] { act(activeView()); }; };
  const auto faster = [](QVMovieView& view, double sign) {
    constexpr double fastest = 8;
    const double rate = view.movie() ? view.movie()->rate() * sign : 0;
    view.play(sign * (rate >= 1 ? qMin(2 * rate, fastest) : 1));
  };
  keys.add(tr("Play or pause"), {Qt::Key_Space}, on([](QVMovieView& view) { view.togglePlaying(); }));
  keys.add(tr("Play backwards; again for faster"), {Qt::Key_J}, [this, faster] { faster(activeView(), -1); });
  keys.add(tr("Stop"), {Qt::Key_K}, on([](QVMovieView& view) { view.play(0); }));
  keys.add(tr("Play; again for faster"), {Qt::Key_L}, [this, faster] { faster(activeView(), 1); });
  keys.add(tr("One frame back"), {Qt::Key_Left, Qt::Key_Comma}, on([](QVMovieView& view) { view.stepFrames(-1); }),
           KeyRepeat::Yes);
  keys.add(tr("One frame forward"), {Qt::Key_Right, Qt::Key_Period}, on([](QVMovieView& view) { view.stepFrames(1); }),
           KeyRepeat::Yes);
  keys.add(tr("One second back"), {QKeySequence(Qt::SHIFT | Qt::Key_Left)},
           on([](QVMovieView& view) { view.stepSeconds(-1); }), KeyRepeat::Yes);
  keys.add(tr("One second forward"), {QKeySequence(Qt::SHIFT | Qt::Key_Right)},
           on([](QVMovieView& view) { view.stepSeconds(1); }), KeyRepeat::Yes);
  keys.add(tr("To the beginning"), {Qt::Key_Home}, on([](QVMovieView& view) { view.gotoBeginning(); }));
  keys.add(tr("To the last frame"), {Qt::Key_End}, on([](QVMovieView& view) { view.gotoEnd(); }));
}
