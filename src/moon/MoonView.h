#pragma once

#include <QWidget>

// The Moon view: the phase of the Moon for a date, computed on this machine.
class MoonView : public QWidget {
    Q_OBJECT

public:
    explicit MoonView(QWidget *parent = nullptr);
    ~MoonView() override;

    static constexpr const char *kViewSizeKey = "MoonViewSize";

    void awakeFromNib();
    void setHemisphere(bool southern);
    bool southernHemisphere() const { return _shemisphere; }
    void loadFrameSize();
    void saveFrameSize();
    void cleanup();

private:
    bool _shemisphere = false;
};
