// SPDX-License-Identifier: MIT
// The pieces of which pictures are made, written as SVG that is complete in itself.
#pragma once

#include <QByteArray>
#include <QString>
#include <QXmlStreamWriter>

#include <initializer_list>
#include <vector>

namespace inspect {

/// A number of pixels, to a tenth.
QString pixels(double value);

/// A line through points, each but the first as a step from the one before, which is shorter.
class PathData
{
public:
    void moveTo(double x, double y) { add('M', x, y); }
    void lineTo(double x, double y) { add('l', x, y); }
    bool isEmpty() const { return m_data.isEmpty(); }
    const QString& data() const { return m_data; }

private:
    void add(char command, double x, double y);

    QString m_data;
    long m_x = 0, m_y = 0; // tenths of pixels
};

struct Attribute
{
    const char* name;
    QString value; ///< an empty one is not written
};

/// Elements appear in the order of the calls. `kind` is the class by which the style finds them.
/// Text may hold anything: what XML cannot hold becomes U+FFFD.
class Svg
{
public:
    Svg();
    Svg(const Svg&) = delete;
    Svg& operator=(const Svg&) = delete;

    /// Above and to the right of what is drawn, in pixels.
    static constexpr double HEADER = 56.0;
    static constexpr double RIGHT = 24.0;

    /// First of all: size, title, style sheet, and a white ground.
    void begin(double width, double height, const QString& title, const char* style);
    /// Title and facts, in the space of HEADER.
    void writeHeader(double left, const QString& title, const QString& facts);
    /// Last of all.
    QByteArray end();

    /// On a line of its own, moved there; until endElement().
    void beginGroup(const char* kind, double left, double top);
    /// Any element, left open.
    void beginElement(const char* name, std::initializer_list<Attribute> attributes);
    void endElement();
    /// What a viewer shows of the open element when asked.
    void tip(const QString& words);

    void rectangle(const char* kind, double left, double top, double width, double height,
                   const QString& fill = QString());
    void path(const char* kind, const QString& data);
    void line(const char* kind, double x1, double y1, double x2, double y2);
    void write(const char* kind, double left, double base, const QString& words);
    /// Each UTF-16 unit of `words` begins at its own place.
    void write(const char* kind, const std::vector<double>& lefts, double base,
               const QString& words);
    /// `png` stretched over the rectangle.
    void image(double left, double top, double width, double height, const QByteArray& png);

private:
    void attributes(std::initializer_list<Attribute> list);

    QByteArray m_svg;
    QXmlStreamWriter m_xml;
};

} // namespace inspect
