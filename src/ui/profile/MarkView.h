// What the charts of the profile have in common: marks (bars, days) with a label and a count that
// can be pointed at, reached by arrow keys, heard and chosen. Draws nothing itself.
#pragma once

#include "ui/theme/Appearance.h"

#include <QWidget>

#include <functional>
#include <vector>

namespace kelvaro {

class MarkView : public QWidget {
public:
    struct Mark {
        QString label;
        qint64 count = 0;
    };

    explicit MarkView(const Appearance& appearance, QWidget* parent = nullptr);

    const std::vector<Mark>& marks() const { return marks_; }
    // Where the mark can be pointed at, in the widget's pixels.
    virtual QRectF place(int mark) const = 0;
    int markAt(QPointF position) const; // -1: none
    int lit() const { return lit_; }    // pointed at or reached by keys; -1: none
    // "ƒ/2.8: 1,204 photos, 32%".
    QString textOf(int mark) const;

    std::function<void(int mark)> onChosen; // one that has photos

protected:
    // `total` is what a mark's share is of.
    void setMarks(std::vector<Mark> marks, qint64 total, const QString& description);
    const Theme& theme() const { return appearance_.theme(); }
    // The mark that a key leads to from another; arrow keys go to the neighbours.
    virtual int next(int mark, int key) const;

    bool event(QEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void light(int mark);
    void choose(int mark);

    const Appearance& appearance_;
    std::vector<Mark> marks_;
    qint64 total_ = 0;
    int lit_ = -1, pressed_ = -1;
};

// A colour with less cover.
QColor faded(QColor colour, double alpha);

} // namespace kelvaro
