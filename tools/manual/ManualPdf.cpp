#include "tools/manual/ManualPdf.h"

#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <utility>

#include "app/widgets/ApplicationIcon.h"
#include "tools/manual/TextBlock.h"
#include "tools/manual/Typography.h"

namespace manual {

namespace {

constexpr int deepestInContents = 2;
constexpr double contentsTop = dots(18);

void drawLine(QPainter& painter, QPdfWriter& writer, const TextStyle& style, const QString& words, double top) {
  TextBlock text(writer, style);
  text.append(words);
  text.setWidth(textWidth);
  text.draw(painter, 0, top);
}

TextStyle contentsStyle(int level, Qt::Alignment alignment = Qt::AlignLeft) {
  return {textFont(level == 1 ? bodySize : cellSize, level == 1 ? Weight::Bold : Weight::Normal), ink, alignment, 120};
}

double contentsSpace(int level) {
  return level == 1 ? dots(3) : dots(0.6);
}

}  // namespace

ManualPdf::ManualPdf(QPdfWriter& writer, const Flow& flow, QString version)
    : writer_(writer), version_(std::move(version)), pagination_(paginate(flow, textHeight)) {
  layOutContents();
}

void ManualPdf::layOutContents() {
  double y = contentsTop;
  const double lineHeight = dots(5);
  contentsPages_ = 1;
  for (const PlacedHeading& heading : pagination_.headings) {
    const int level = heading.box->headingLevel;
    if (level > deepestInContents) continue;
    y += contentsSpace(level);
    // A chapter is not left alone at the foot.
    if (y + lineHeight * (level == 1 ? 2 : 1) > textHeight) {
      ++contentsPages_;
      y = 0;
    }
    contents_.push_back({&heading, y, contentsPages_ - 1});
    y += lineHeight;
  }
}

void ManualPdf::draw() {
  QPainter painter(&writer_);
  painter.setRenderHint(QPainter::LosslessImageRendering);
  drawTitlePage(painter);
  painter.translate(textLeft, textTop);
  drawContents(painter);
  for (std::size_t i = 0; i < pagination_.pages.size(); ++i) {
    writer_.newPage();
    drawPage(painter, i);
  }
}

void ManualPdf::drawTitlePage(QPainter& painter) const {
  constexpr int pixels = 1024;
  constexpr double side = dots(58), top = dots(70);
  painter.drawImage(QRectF((pageWidth - side) / 2, top, side, side), applicationIconImage(pixels));
  painter.save();
  painter.translate(textLeft, 0);
  const auto line = [&](double points, Weight weight, const QColor& color, const QString& words, double y) {
    drawLine(painter, writer_, {textFont(points, weight), color, Qt::AlignHCenter, 100}, words, y);
  };
  constexpr double large = 34, medium = 17, small = 10;
  line(large, Weight::Bold, accent, QStringLiteral("Lumacheck"), top + side + dots(14));
  line(medium, Weight::Normal, ink, QStringLiteral("User Manual"), top + side + dots(33));
  line(small, Weight::Normal, faintInk, QStringLiteral("Version %1").arg(version_), top + side + dots(48));
  line(small, Weight::Normal, faintInk, QStringLiteral("Vextrel, by Quorvane"), dots(262));
  painter.restore();
}

void ManualPdf::drawContents(QPainter& painter) {
  int page = -1;
  for (const ContentsLine& line : contents_) {
    if (line.page != page) {
      page = line.page;
      writer_.newPage();
      if (page == 0) {
        drawLine(painter, writer_, {textFont(headingSize(1), Weight::Bold), accent, Qt::AlignLeft, 115},
                 QStringLiteral("Contents"), 0);
      }
    }
    drawContentsLine(painter, line);
  }
}

void ManualPdf::drawContentsLine(QPainter& painter, const ContentsLine& line) const {
  const Box& heading = *line.heading->box;
  const int level = heading.headingLevel;
  const double indent = level == 1 ? 0 : dots(6), numberWidth = dots(12);
  TextBlock title(writer_, contentsStyle(level));
  title.append(heading.title, heading.anchor);
  const double end = indent + title.idealWidth() + dots(2);
  title.setWidth(textWidth - indent - numberWidth);
  title.draw(painter, indent, line.top);
  TextBlock number(writer_, contentsStyle(level, Qt::AlignRight));
  number.append(QString::number(numberOf(line.heading->page)), heading.anchor);
  number.setWidth(numberWidth);
  number.draw(painter, textWidth - numberWidth, line.top);
  if (level == 1) return;
  painter.setPen(QPen(ruleColor, dots(0.25), Qt::CustomDashLine));
  QPen dotted(ruleColor, dots(0.3));
  dotted.setDashPattern({1, 6});
  painter.setPen(dotted);
  const double baseline = line.top + dots(3.2);
  painter.drawLine(QLineF(end, baseline, textWidth - numberWidth + dots(4), baseline));
}

void ManualPdf::drawPage(QPainter& painter, std::size_t index) const {
  drawRunningTexts(painter, index);
  for (const PlacedBox& placed : pagination_.pages[index]) {
    painter.save();
    painter.translate(0, placed.top);
    placed.box->draw(painter);
    painter.restore();
  }
}

QString ManualPdf::chapterOf(std::size_t page) const {
  QString chapter;
  for (const PlacedHeading& heading : pagination_.headings) {
    if (static_cast<std::size_t>(heading.page) > page) break;
    if (heading.box->headingLevel == 1) chapter = heading.box->title;
  }
  return chapter;
}

void ManualPdf::drawRunningTexts(QPainter& painter, std::size_t index) const {
  constexpr double headerTop = -dots(13), footerTop = textHeight + dots(8), ruleTop = textHeight + dots(6);
  const TextStyle left{textFont(runningSize), faintInk, Qt::AlignLeft, 100};
  TextStyle right = left;
  right.alignment = Qt::AlignRight;
  drawLine(painter, writer_, right, chapterOf(index), headerTop);
  painter.setPen(QPen(ruleColor, dots(0.15)));
  painter.drawLine(QLineF(0, ruleTop, textWidth, ruleTop));
  drawLine(painter, writer_, left, QStringLiteral("Lumacheck User Manual"), footerTop);
  drawLine(painter, writer_, right, QString::number(numberOf(static_cast<int>(index))), footerTop);
}

Navigation ManualPdf::navigation() const {
  constexpr double above = dots(4);  // what stays visible over the place that a link leads to
  const auto placeOf = [this](const PlacedHeading& heading) {
    const double down = std::max(textTop + heading.top - above, 0.0);
    return Destination{numberOf(heading.page) - 1, (pageHeight - down) * 72 / dotsPerInch};
  };
  Navigation navigation;
  for (const auto& [anchor, heading] : anchorsOf(pagination_)) navigation.anchors.emplace(anchor, placeOf(heading));
  for (const PlacedHeading& heading : pagination_.headings) {
    if (heading.box->headingLevel > deepestInContents) continue;
    navigation.outline.push_back({heading.box->title, heading.box->headingLevel, placeOf(heading)});
  }
  return navigation;
}

}  // namespace manual
