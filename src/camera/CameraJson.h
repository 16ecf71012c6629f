// Members of a camera's JSON.
#pragma once

#include <zx3DQt/WorldPosition.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace zarvex::zx3DQt {

inline QJsonArray ToJson(WorldPosition const& position) {
    return {position.x, position.y, position.z};
}

/// Reads members, and remembers whether each was there and in range.
class CameraJsonReader {
public:
    /// The object must say that it is of this type.
    CameraJsonReader(QJsonObject const& json, char const* type) : m_json(json) {
        m_isValid = json["type"].toString() == QLatin1String(type);
    }

    bool IsValid() const { return m_isValid; }

    double Number(char const* name, double least, double greatest) {
        return Check(m_json[QLatin1String(name)], least, greatest);
    }

    double Angle(char const* name, double greatest) { return Number(name, -greatest, greatest); }

    WorldPosition Position(char const* name) {
        QJsonArray const array = m_json[QLatin1String(name)].toArray();
        m_isValid = m_isValid && array.size() == 3;
        auto const at = [&](int i) { return Check(array.at(i), -HUGE_VAL, HUGE_VAL); };
        return {at(0), at(1), at(2)};
    }

    bool Flag(char const* name) {
        QJsonValue const value = m_json[QLatin1String(name)];
        m_isValid = m_isValid && value.isBool();
        return value.toBool();
    }

    /// The index of one of the names.
    template<std::size_t N>
    std::size_t Choice(char const* name, char const* const (&choices)[N]) {
        QString const value = m_json[QLatin1String(name)].toString();
        auto const found = std::find(choices, choices + N, value);
        m_isValid = m_isValid && found != choices + N;
        return m_isValid ? static_cast<std::size_t>(found - choices) : 0;
    }

private:
    double Check(QJsonValue const& value, double least, double greatest) {
        double const number = value.toDouble(NAN);
        m_isValid = m_isValid && std::isfinite(number) && number >= least && number <= greatest;
        return number;
    }

    QJsonObject const& m_json;
    bool m_isValid = false;
};

/// As they are written, in the order of the values.
constexpr char const* kProjectionNames[] = {"perspective", "parallel"};
constexpr char const* kUpAxisNames[] = {"y", "z"};
constexpr char const* kYDirectionNames[] = {"up", "down"};

template<typename Value, std::size_t N>
QString NameOf(Value value, char const* const (&names)[N]) {
    return QLatin1String(names[static_cast<std::size_t>(value)]);
}

} // namespace zarvex::zx3DQt
