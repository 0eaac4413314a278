// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/graphics/NSFont.h>

#include <QObject>
#include <QProgressBar>
#include <QSize>
#include <QTimer>

/// What a progress indicator looks like. AppKit: `NSProgressIndicatorStyle`.
enum NSProgressIndicatorStyle {
    NSProgressIndicatorBarStyle = 0,      ///< a bar
    NSProgressIndicatorSpinningStyle = 1, ///< a wheel of spokes, or a pie
};

extern template class VXKIT_EXPORT ViewOf<QProgressBar>;

/// Tells how far something is, or that something goes on: as a bar or as a wheel of spokes.
///
/// It is one of Qt's progress bars, as which a screen reader knows it, and is drawn by itself in the colours of its
/// palette: WindowText for the wheel and the empty bar, Highlight for what is done. A wheel that is determinate is a
/// pie. Set values by the operations here, not by QProgressBar's.
///
/// It moves only while it was started, can be seen, and the person does not wish less motion: a wheel turns slowly
/// then, a bar stands. Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSProgressIndicator : public ViewOf<QProgressBar> {
    Q_OBJECT
    Q_PROPERTY(bool spinning READ isSpinning WRITE setSpinning)
    Q_PROPERTY(bool indeterminate READ isIndeterminate WRITE setIndeterminate)
    Q_PROPERTY(double minValue READ minValue WRITE setMinValue)
    Q_PROPERTY(double maxValue READ maxValue WRITE setMaxValue)
    Q_PROPERTY(double doubleValue READ doubleValue WRITE setDoubleValue)
    Q_PROPERTY(bool displayedWhenStopped READ isDisplayedWhenStopped WRITE setDisplayedWhenStopped)

public:
    /// One without a frame, for a layout of Qt's.
    explicit NSProgressIndicator(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit NSProgressIndicator(const NSRect& frame, QWidget* parent = nullptr);
    ~NSProgressIndicator() override;

    /// A bar at first. AppKit: `-style`, `-setStyle:`.
    [[nodiscard]] NSProgressIndicatorStyle indicatorStyle() const { return m_style; }
    /// Redraws it.
    void setIndicatorStyle(NSProgressIndicatorStyle style);
    /// Whether it is a wheel or a pie: the style, as forms have it.
    [[nodiscard]] bool isSpinning() const { return m_style == NSProgressIndicatorSpinningStyle; }
    /// The style of a wheel or that of a bar.
    void setSpinning(bool flag) {
        setIndicatorStyle(flag ? NSProgressIndicatorSpinningStyle : NSProgressIndicatorBarStyle);
    }

    /// Whether nobody knows how far it is. Yes, at first. AppKit: `-isIndeterminate`.
    [[nodiscard]] bool isIndeterminate() const { return m_isIndeterminate; }
    /// Redraws it. AppKit: `-setIndeterminate:`.
    void setIndeterminate(bool flag);

    /// The value that it begins with, at first 0. AppKit: `-minValue`.
    [[nodiscard]] double minValue() const { return m_minValue; }
    /// NaN changes nothing. AppKit: `-setMinValue:`.
    void setMinValue(double value);
    /// The value that it ends with, at first 100; where that is not above the beginning, nothing is done yet. AppKit:
    /// `-maxValue`.
    [[nodiscard]] double maxValue() const { return m_maxValue; }
    /// NaN changes nothing. AppKit: `-setMaxValue:`.
    void setMaxValue(double value);
    /// How far it is, as it was set; 0 at first. AppKit: `-doubleValue`.
    [[nodiscard]] double doubleValue() const { return m_doubleValue; }
    /// A value beyond the ends is kept and shown as the nearer of them; NaN changes nothing. AppKit:
    /// `-setDoubleValue:`.
    void setDoubleValue(double value);
    /// AppKit: `-incrementBy:`.
    void incrementBy(double delta) { setDoubleValue(m_doubleValue + delta); }

    /// Lets an indeterminate one move. `sender` is not looked at. AppKit: `-startAnimation:`.
    void startAnimation(QObject* sender);
    /// Holds it. `sender` is not looked at. AppKit: `-stopAnimation:`.
    void stopAnimation(QObject* sender);

    /// Whether it is seen while it is not started and nobody knows how far it is. Yes, at first.
    /// AppKit: `-isDisplayedWhenStopped`.
    [[nodiscard]] bool isDisplayedWhenStopped() const { return m_isDisplayedWhenStopped; }
    /// Redraws it. AppKit: `-setDisplayedWhenStopped:`.
    void setDisplayedWhenStopped(bool flag);

    /// Regular, 32 points for a wheel, or small, 16. AppKit: `-controlSize`.
    [[nodiscard]] NSControlSize controlSize() const { return m_controlSize; }
    /// Changes what sizeHint answers, not the frame. AppKit: `-setControlSize:`.
    void setControlSize(NSControlSize controlSize);

    /// Whether it moves at this moment.
    [[nodiscard]] bool isMoving() const { return m_timer.isActive(); }

    /// Takes over a range and a value that a nib has for QProgressBar's own, which make it determinate.
    void awakeFromNib() override;

    /// Draws the bar, the wheel or the pie, as the style and what is known have it.
    void drawRect(const NSRect& dirtyRect) override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    [[nodiscard]] double fraction() const;
    void valuesHaveChanged();
    void updateTimer();
    void takeStep();
    void drawBar();
    void drawWheel();
    void drawPie();

    NSProgressIndicatorStyle m_style = NSProgressIndicatorBarStyle;
    NSControlSize m_controlSize = NSRegularControlSize;
    bool m_isIndeterminate = true;
    bool m_isAnimating = false;
    bool m_isDisplayedWhenStopped = true;
    double m_minValue = 0;
    double m_maxValue = 100;
    double m_doubleValue = 0;
    int m_step = 0;
    QTimer m_timer{this};
};
