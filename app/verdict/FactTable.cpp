#include "app/verdict/FactTable.h"

#include <QAbstractButton>
#include <QEvent>
#include <QHeaderView>
#include <QPainter>
#include <QTextOption>

namespace {

enum Row { SourceRow, DestRow, RowCount };

/// The names of rows and columns, without the ground of a button.
class PlainHeader : public QHeaderView {
 public:
  explicit PlainHeader(Qt::Orientation orientation) : QHeaderView(orientation) {
    setSectionsClickable(false);
    setHighlightSections(false);
    setDefaultAlignment(Qt::AlignLeading | Qt::AlignVCenter);
    viewport()->setAutoFillBackground(false);
  }

 protected:
  void paintSection(QPainter* painter, const QRect& section, int index) const override {
    constexpr int besideText = 3;
    painter->setPen(palette().color(QPalette::WindowText));
    painter->drawText(section.adjusted(besideText, 0, -besideText, 0),
                      model()->headerData(index, orientation()).toString(), QTextOption(defaultAlignment()));
  }
};

/// The ground of what differs: amber, faint where it holds no longer.
QColor markedGround(const QPalette& palette, bool holds) {
  constexpr int middle = 128, faint = 80;
  QColor ground = palette.color(QPalette::Window).lightness() < middle ? QColor(96, 70, 10) : QColor(255, 232, 170);
  if (!holds) ground.setAlpha(faint);
  return ground;
}

}  // namespace

FactTable::FactTable(QWidget* parent) : QTableWidget(RowCount, 0, parent) {
  setObjectName(QStringLiteral("factTable"));
  setAccessibleName(tr("Source and destination compared"));
  setHorizontalHeader(new PlainHeader(Qt::Horizontal));
  setVerticalHeader(new PlainHeader(Qt::Vertical));
  setVerticalHeaderLabels({tr("Source"), tr("Destination")});
  setEditTriggers(NoEditTriggers);
  setSelectionMode(NoSelection);
  setTabKeyNavigation(false);
  setShowGrid(false);
  setFrameShape(NoFrame);
  if (auto* const corner = findChild<QAbstractButton*>(QString(), Qt::FindDirectChildrenOnly)) {
    corner->installEventFilter(this);
  }
  setWordWrap(false);
  setTextElideMode(Qt::ElideMiddle);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  viewport()->setAutoFillBackground(false);
  constexpr int aroundText = 6;
  horizontalHeader()->setMinimumSectionSize(2 * aroundText);
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + aroundText);
}

void FactTable::changeEvent(QEvent* event) {
  QTableWidget::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) setFacts(facts_, hold_);
}

/// The corner between the headers is a button, which has nothing to do here.
bool FactTable::eventFilter(QObject* watched, QEvent* event) {
  const bool isCorner = qobject_cast<QAbstractButton*>(watched) != nullptr;
  return (isCorner && event->type() == QEvent::Paint) || QTableWidget::eventFilter(watched, event);
}

void FactTable::setFacts(const QList<Fact>& facts, bool hold) {
  facts_ = facts;
  hold_ = hold;
  setColumnCount(static_cast<int>(facts.size()));
  for (int column = 0; column < columnCount(); ++column) {
    const Fact& fact = facts[column];
    setHorizontalHeaderItem(column, new QTableWidgetItem(fact.name));
    for (const int row : {SourceRow, DestRow}) setCell(row, column, fact);
    // The names of the files, which come first, get what room there is.
    horizontalHeader()->setSectionResizeMode(column,
                                             column == 0 ? QHeaderView::Stretch : QHeaderView::ResizeToContents);
  }
  updateGeometry();
}

void FactTable::setCell(int row, int column, const Fact& fact) {
  const QString text = row == SourceRow ? fact.source : fact.dest;
  auto* const cell = new QTableWidgetItem(fact.differs && row == DestRow ? QStringLiteral("≠ ") + text : text);
  const QString tip = row == SourceRow ? fact.sourceTip : fact.destTip;
  cell->setToolTip(tip);
  cell->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
  if (fact.differs) {
    QFont bold = font();
    bold.setBold(true);
    cell->setFont(bold);
    cell->setBackground(markedGround(palette(), hold_));
    //: For screen readers. %1: a value of one movie that the other has otherwise
    cell->setData(Qt::AccessibleTextRole, tr("%1, differs").arg(text));
  }
  setItem(row, column, cell);
}

QSize FactTable::sizeHint() const {
  const int height = horizontalHeader()->sizeHint().height() + RowCount * verticalHeader()->defaultSectionSize();
  return {QTableWidget::sizeHint().width(), height + 2 * frameWidth()};
}

QSize FactTable::minimumSizeHint() const {
  constexpr int narrowest = 300;
  return {narrowest, sizeHint().height()};
}
