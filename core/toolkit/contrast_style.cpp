#include "core/toolkit/contrast_style.h"

#include <QApplication>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>

namespace {

constexpr int kNearBlack = 24, kNearWhite = 250, kDarkText = 10;  // lightness, 0 to 255

// The style draws its lines in a darker shade of the window's colour: there is none of black.
class ContrastStyle : public QProxyStyle {
 public:
  ContrastStyle() : QProxyStyle(QStringLiteral("fusion")) {}

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    switch (element) {
      case PE_IndicatorCheckBox:
      case PE_IndicatorItemViewItemCheck:
      case PE_FrameLineEdit:
      case PE_PanelButtonCommand:
      case PE_PanelMenu:
      case PE_FrameMenu:
      case PE_FrameGroupBox:
      case PE_Frame:
        outline(painter, *option, option->rect);
        break;
      case PE_IndicatorRadioButton:
        outline(painter, *option, option->rect, option->rect.height() / 2.0);
        break;
      case PE_PanelButtonTool:
        if (option->state & (State_On | State_Sunken | State_HasFocus | State_MouseOver))
          outline(painter, *option, option->rect);
        break;
      default:
        break;
    }
  }

  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                          const QWidget* widget) const override {
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (control == CC_ComboBox || control == CC_SpinBox) outline(painter, *option, option->rect);
    if (control == CC_ScrollBar)
      outline(painter, *option, subControlRect(control, option, SC_ScrollBarSlider, widget));
  }

  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override {
    QProxyStyle::drawControl(element, option, painter, widget);
    if (element == CE_ProgressBarGroove || element == CE_HeaderSection)
      outline(painter, *option, option->rect);
  }

 private:
  static void outline(QPainter* painter, const QStyleOption& option, const QRect& rect, qreal radius = 2) {
    const bool focus = (option.state & State_HasFocus) && (option.state & State_Enabled);
    const auto group = option.state & State_Enabled ? QPalette::Active : QPalette::Disabled;
    const qreal width = focus ? 2 : 1;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(
        QPen(option.palette.color(group, focus ? QPalette::Highlight : QPalette::WindowText), width));
    painter->setBrush(Qt::NoBrush);
    const QRectF line = QRectF(rect).adjusted(width / 2, width / 2, -width / 2, -width / 2);
    painter->drawRoundedRect(line, radius, radius);
    painter->restore();
  }
};

// Also below a platform theme's own wrapping.
bool draws_like_fusion(const QStyle* style) {
  const auto* proxy = qobject_cast<const QProxyStyle*>(style);
  return (proxy ? proxy->baseStyle() : style)->inherits("QFusionStyle");
}

bool wants_outlines() {
  const QPalette palette = QApplication::palette();
  const int window = palette.color(QPalette::Window).lightness();
  return window <= kNearBlack ||
         (window >= kNearWhite && palette.color(QPalette::WindowText).lightness() <= kDarkText);
}

}  // namespace

void contrast_style_update() {
  const bool has = dynamic_cast<ContrastStyle*>(QApplication::style()) != nullptr;
  if (has == wants_outlines()) return;
  if (!has && !draws_like_fusion(QApplication::style())) return;  // another draws its own lines
  if (has)
    QApplication::setStyle(QStringLiteral("fusion"));
  else
    QApplication::setStyle(new ContrastStyle);
}
