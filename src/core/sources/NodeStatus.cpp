#include "core/sources/NodeStatus.h"

QString NodeStatus::shortText(State state, int percent)
{
    switch (state) {
    case State::Unloaded:
        return QStringLiteral("!");
    case State::Idle:
        return QString();
    case State::Queued:
        return QStringLiteral("-");
    case State::Connecting:
        return QStringLiteral(".");
    case State::Receiving:
        return percent < 0 ? QStringLiteral("...") : QString::number(percent) + QLatin1Char('%');
    case State::Failed:
        return QStringLiteral("Err");
    case State::Done:
        return checkMark();
    }
    return QString();
}

QString NodeStatus::longText(State state, int percent)
{
    switch (state) {
    case State::Unloaded:
        return QStringLiteral("Press \"Reload\" to begin");
    case State::Idle:
    case State::Done:
        return QString();
    case State::Queued:
        return QStringLiteral("-");
    case State::Connecting:
        return QStringLiteral("Connecting...");
    case State::Receiving:
        return percent < 0 ? QStringLiteral("Connected...")
                           : QString::number(percent) + QStringLiteral("% Complete...");
    case State::Failed:
        return errorLong();
    }
    return QString();
}

QString NodeStatus::checkMark()
{
    return QString(QChar(0x221A));
}

QString NodeStatus::errorLong()
{
    return QStringLiteral("Error, please see Activity Window for details");
}
