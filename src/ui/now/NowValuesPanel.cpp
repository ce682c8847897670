#include "ui/now/NowValuesPanel.h"

#include "core/now/NowFormat.h"
#include "core/now/NowSummary.h"
#include "ui/now/NowValueTile.h"

#include <QDateTime>
#include <QJsonArray>
#include <QVBoxLayout>

#include <algorithm>

namespace {

// "2026-05-01 12:34 UTC" for a time of the summary.
QString utc(const QJsonValue &iso, const QString &format = QStringLiteral("yyyy-MM-dd HH:mm"))
{
    const std::optional<qint64> time = NowFormat::parseTime(iso.toString());
    if (!time)
        return QString();
    return QDateTime::fromSecsSinceEpoch(*time, Qt::UTC).toString(format) + QStringLiteral(" UTC");
}

QString number(const QJsonValue &value, int decimals)
{
    return value.isDouble() ? QString::number(value.toDouble(), 'f', decimals)
                            : QStringLiteral("–");
}

QString number(const QJsonObject &object, const char *member, int decimals)
{
    return number(object.value(QLatin1String(member)), decimals);
}

// Time and age of a member that has them; staleness as the summary says.
void showAge(NowValueTile *tile, const QJsonObject &member)
{
    tile->setAge(utc(member.value(QStringLiteral("time"))), NowSummary::ageText(member),
                 member.value(QStringLiteral("stale")).toBool());
}

// The highest of a member of every day of the scales' forecast; -1 when no day has one.
int highest(const QJsonArray &days, const char *member)
{
    int best = -1;
    for (const QJsonValue &day : days) {
        const QJsonValue value = day.toObject().value(QLatin1String(member));
        if (value.isDouble())
            best = std::max(best, value.toInt());
    }
    return best;
}

QString percent(int value)
{
    return value < 0 ? QStringLiteral("–") : QStringLiteral("%1 %").arg(value);
}

} // namespace

NowValuesPanel::NowValuesPanel(QWidget *parent)
    : QWidget(parent), _kp(new NowValueTile(tr("Planetary K index"))),
      _xray(new NowValueTile(tr("X-ray flux"))), _solarWind(new NowValueTile(tr("Solar wind"))),
      _imf(new NowValueTile(tr("Magnetic field"))),
      _protons(new NowValueTile(tr("Protons ≥10 MeV"))),
      _scales(new NowValueTile(tr("NOAA scales now")))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    for (NowValueTile *tile : tiles())
        layout->addWidget(tile);
    layout->addStretch(1);
}

QList<NowValueTile *> NowValuesPanel::tiles() const
{
    return {_kp, _xray, _solarWind, _imf, _protons, _scales};
}

void NowValuesPanel::showSummary(const QJsonObject &summary)
{
    const auto member = [&](const char *name) {
        return summary.value(QLatin1String(name)).toObject();
    };
    showKp(member("kp"), member("kpForecastMax"));
    showXray(member("xray"), member("xrayMax24h"));
    showSolarWind(member("solarWind"));
    showImf(member("imf"));
    showProtons(member("protons"));
    showScales(member("scales"));
}

void NowValuesPanel::showKp(const QJsonObject &kp, const QJsonObject &forecast)
{
    if (kp.isEmpty())
        return _kp->setMissing();
    const int g = kp.value(QStringLiteral("gScale")).toInt();
    _kp->setValue(number(kp, "value", 2), {{QStringLiteral("G%1").arg(g), g}});
    QString detail =
        kp.value(QStringLiteral("estimated")).toBool() ? tr("estimated") : tr("observed");
    if (!forecast.isEmpty())
        detail += tr("; forecast for the next 24 h: up to %1 (G%2)")
                      .arg(number(forecast, "value", 2))
                      .arg(forecast.value(QStringLiteral("gScale")).toInt());
    _kp->setDetail(detail);
    showAge(_kp, kp);
}

void NowValuesPanel::showXray(const QJsonObject &xray, const QJsonObject &highest)
{
    if (xray.isEmpty())
        return _xray->setMissing();
    _xray->setValue(xray.value(QStringLiteral("class")).toString());
    QString detail =
        tr("%1 W/m² (0.1–0.8 nm)")
            .arg(QString::number(xray.value(QStringLiteral("flux")).toDouble(), 'e', 2));
    const QJsonValue satellite = xray.value(QStringLiteral("satellite"));
    if (!satellite.isNull())
        detail += tr(", GOES-%1").arg(satellite.toVariant().toString());
    if (!highest.isEmpty())
        detail += tr("\nHighest in 24 h: %1 at %2")
                      .arg(highest.value(QStringLiteral("class")).toString(),
                           utc(highest.value(QStringLiteral("time")), QStringLiteral("HH:mm")));
    _xray->setDetail(detail);
    showAge(_xray, xray);
}

void NowValuesPanel::showSolarWind(const QJsonObject &wind)
{
    if (wind.isEmpty())
        return _solarWind->setMissing();
    _solarWind->setValue(tr("%1 km/s").arg(number(wind, "speed", 0)));
    QString detail = tr("Density %1 p/cm³, temperature %2 K")
                         .arg(number(wind, "density", 1), number(wind, "temperature", 0));
    if (const QString source = wind.value(QStringLiteral("source")).toString(); !source.isEmpty())
        detail += tr(", %1").arg(source);
    _solarWind->setDetail(detail);
    showAge(_solarWind, wind);
}

void NowValuesPanel::showImf(const QJsonObject &imf)
{
    if (imf.isEmpty())
        return _imf->setMissing();
    // A southward field (Bz below zero) couples with the Earth's and drives storms: it is the
    // one to notice.
    const double bz = imf.value(QStringLiteral("bz")).toDouble();
    QList<NowValueTile::Badge> badges;
    if (bz < 0)
        badges.append({tr("south"), 4});
    _imf->setValue(tr("Bz %1 nT").arg(number(imf, "bz", 1)), badges);
    QString detail = tr("Bt %1 nT").arg(number(imf, "bt", 1));
    if (const QString source = imf.value(QStringLiteral("source")).toString(); !source.isEmpty())
        detail += tr(", %1").arg(source);
    _imf->setDetail(detail);
    showAge(_imf, imf);
}

void NowValuesPanel::showProtons(const QJsonObject &protons)
{
    if (protons.isEmpty())
        return _protons->setMissing();
    const double flux = protons.value(QStringLiteral("flux")).toDouble();
    _protons->setValue(tr("%1 pfu").arg(QString::number(flux, 'f', flux < 10 ? 2 : 0)));
    _protons->setDetail(QString());
    showAge(_protons, protons);
}

void NowValuesPanel::showScales(const QJsonObject &scales)
{
    if (scales.isEmpty())
        return _scales->setMissing();
    QList<NowValueTile::Badge> badges;
    for (const char *scale : {"R", "S", "G"}) {
        const QJsonValue level = scales.value(QLatin1String(scale));
        badges.append({QLatin1String(scale) + number(level, 0), level.toInt()});
    }
    _scales->setValue(QString(), badges);
    const QJsonArray days = scales.value(QStringLiteral("forecast")).toArray();
    const int g = highest(days, "G");
    _scales->setDetail(
        days.isEmpty()
            ? QString()
            : tr("Next 3 days at most: G%1; radio blackouts R1–R2 %2, R3 or more %3; "
                 "radiation storm S1 or more %4")
                  .arg(g < 0 ? QStringLiteral("–") : QString::number(g),
                       percent(highest(days, "rMinorProb")), percent(highest(days, "rMajorProb")),
                       percent(highest(days, "sProb"))));
    _scales->setAge(tr("issued %1").arg(utc(scales.value(QStringLiteral("time")))), QString(),
                    false);
}
