#pragma once

#include <QJsonObject>
#include <QWidget>

class NowValueTile;

// The current values of the Now view, one tile each: the K index with its G level, the X-ray class
// now and the day's highest, the solar wind, the magnetic field (a southward Bz stands out), the
// protons and the three scales with their forecast. Everything shown comes from the summary that
// `vantorel now --json` prints; nothing is worked out again here.
class NowValuesPanel : public QWidget {
    Q_OBJECT

public:
    explicit NowValuesPanel(QWidget *parent = nullptr);

    void showSummary(const QJsonObject &summary);
    QList<NowValueTile *> tiles() const;

private:
    void showKp(const QJsonObject &kp, const QJsonObject &forecast);
    void showXray(const QJsonObject &xray, const QJsonObject &highest);
    void showSolarWind(const QJsonObject &wind);
    void showImf(const QJsonObject &imf);
    void showProtons(const QJsonObject &protons);
    void showScales(const QJsonObject &scales);

    NowValueTile *_kp;
    NowValueTile *_xray;
    NowValueTile *_solarWind;
    NowValueTile *_imf;
    NowValueTile *_protons;
    NowValueTile *_scales;
};
