// SPDX-License-Identifier: MIT
#include "station/picture/svg.h"

#include <QStringList>

#include <cmath>

namespace inspect {

namespace {

// What XML cannot hold becomes visible.
QString holdable(QString text)
{
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        const bool pair =
            c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (pair)
            ++i;
        else if (c.isSurrogate() || c.unicode() < 0x20 || c.unicode() >= 0xFFFE)
            text[i] = QChar::ReplacementCharacter;
    }
    return text;
}

} // namespace

QString pixels(double value)
{
    QString text = QString::number(value, 'f', 1);
    if (text.endsWith(QLatin1String(".0")))
        text.chop(2);
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

void PathData::add(char command, double x, double y)
{
    const long right = std::lround(10.0 * x);
    const long down = std::lround(10.0 * y);
    const bool relative = command == 'l';
    m_data += QLatin1Char(command) +
              pixels(static_cast<double>(relative ? right - m_x : right) / 10.0) +
              QLatin1Char(' ') + pixels(static_cast<double>(relative ? down - m_y : down) / 10.0);
    m_x = right;
    m_y = down;
}

Svg::Svg()
    : m_xml(&m_svg)
{
}

void Svg::begin(double width, double height, const QString& title, const char* style)
{
    m_xml.writeStartDocument();
    m_xml.writeStartElement(QStringLiteral("svg"));
    m_xml.writeDefaultNamespace(QStringLiteral("http://www.w3.org/2000/svg"));
    m_xml.writeNamespace(QStringLiteral("http://www.w3.org/1999/xlink"), QStringLiteral("xlink"));
    attributes({{"width", pixels(width)},
                {"height", pixels(height)},
                {"viewBox", QStringLiteral("0 0 %1 %2").arg(pixels(width), pixels(height))}});
    m_xml.writeTextElement(QStringLiteral("title"), holdable(title));
    m_xml.writeTextElement(QStringLiteral("style"), QLatin1String(style));
    rectangle({}, 0.0, 0.0, width, height, QStringLiteral("#fff"));
}

void Svg::writeHeader(double left, const QString& title, const QString& facts)
{
    write("title", left, 24.0, title);
    write("facts", left, 44.0, facts);
}

QByteArray Svg::end()
{
    m_xml.writeEndDocument();
    return m_svg;
}

void Svg::beginGroup(const char* kind, double left, double top)
{
    m_xml.writeCharacters(QStringLiteral("\n"));
    beginElement(
        "g", {{"class", QLatin1String(kind)},
              {"transform", QStringLiteral("translate(%1 %2)").arg(pixels(left), pixels(top))}});
}

void Svg::beginElement(const char* name, std::initializer_list<Attribute> attributes)
{
    m_xml.writeStartElement(QLatin1String(name));
    this->attributes(attributes);
}

void Svg::endElement()
{
    m_xml.writeEndElement();
}

void Svg::tip(const QString& words)
{
    m_xml.writeTextElement(QStringLiteral("title"), holdable(words));
}

void Svg::attributes(std::initializer_list<Attribute> list)
{
    for (const Attribute& attribute : list) {
        if (!attribute.value.isEmpty())
            m_xml.writeAttribute(QLatin1String(attribute.name), attribute.value);
    }
}

void Svg::rectangle(const char* kind, double left, double top, double width, double height,
                    const QString& fill)
{
    m_xml.writeEmptyElement(QStringLiteral("rect"));
    attributes({{"class", QLatin1String(kind)},
                {"x", pixels(left)},
                {"y", pixels(top)},
                {"width", pixels(width)},
                {"height", pixels(height)},
                {"fill", fill}});
}

void Svg::path(const char* kind, const QString& data)
{
    if (data.isEmpty())
        return;
    m_xml.writeEmptyElement(QStringLiteral("path"));
    attributes({{"class", QLatin1String(kind)}, {"d", data}});
}

void Svg::line(const char* kind, double x1, double y1, double x2, double y2)
{
    PathData data;
    data.moveTo(x1, y1);
    data.lineTo(x2, y2);
    path(kind, data.data());
}

void Svg::write(const char* kind, double left, double base, const QString& words)
{
    m_xml.writeStartElement(QStringLiteral("text"));
    attributes({{"class", QLatin1String(kind)}, {"x", pixels(left)}, {"y", pixels(base)}});
    m_xml.writeCharacters(holdable(words));
    m_xml.writeEndElement();
}

void Svg::write(const char* kind, const std::vector<double>& lefts, double base,
                const QString& words)
{
    QStringList places;
    for (const double left : lefts)
        places += pixels(left);
    m_xml.writeStartElement(QStringLiteral("text"));
    attributes({{"class", QLatin1String(kind)},
                {"x", places.join(QLatin1Char(' '))},
                {"y", pixels(base)}});
    m_xml.writeCharacters(holdable(words));
    m_xml.writeEndElement();
}

void Svg::image(double left, double top, double width, double height, const QByteArray& png)
{
    m_xml.writeEmptyElement(QStringLiteral("image"));
    attributes({{"x", pixels(left)},
                {"y", pixels(top)},
                {"width", pixels(width)},
                {"height", pixels(height)},
                {"preserveAspectRatio", QStringLiteral("none")}});
    m_xml.writeAttribute(QStringLiteral("http://www.w3.org/1999/xlink"), QStringLiteral("href"),
                         QStringLiteral("data:image/png;base64,") +
                             QString::fromLatin1(png.toBase64()));
}

} // namespace inspect
