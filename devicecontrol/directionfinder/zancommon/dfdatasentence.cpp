#include "zancommon/dfdatasentence.h"

#include <algorithm>
#include <charconv>
#include <limits>

void DFDataSentence::Begin(const Head& head) {
    m_length = 0;
    Add("$PLG,");
    AddNumber(head.azimuth / 10.0, 5, 1);
    Add(",FRQ,");
    AddNumber(head.frequency, 10, 0);
    Add(",CMP,");
    AddNumber(head.heading / 10.0, 5, 1);
    Add(",QUA,");
    AddNumber(head.quality, 5, 1);
    Add(",LEV,");
    AddNumber(head.level / 100.0, 5, 1);
    Add(",TIM,");
    AddTime(head.time);
}

void DFDataSentence::AddTail(const Tail& tail) {
    Add(",ELV,");
    AddNumber(tail.elevation / 10.0, 3, 1);
    Add(",PTC,");
    AddNumber(tail.pitch, 3, 1);
    Add(",RLL,");
    AddNumber(tail.roll, 3, 1);
    Add(",ALT,");
    AddNumber(tail.altitude, 3, 1);
    Add(",PTM,");
    AddTime(tail.positionTime);
    Add(",LAT,");
    AddNumber(tail.latitude, 9, 5);
    // Two more decimals than the latitude: readers of the line rely on both.
    Add(",LON,");
    AddNumber(tail.longitude, 9, 7);
}

void DFDataSentence::AddElementNumber(unsigned number) {
    Add(",SR,");
    char* const begin = m_buffer.data() + m_length;
    m_length = static_cast<std::size_t>(std::to_chars(begin, m_buffer.data() + m_buffer.size(), number).ptr -
                                        m_buffer.data());
}

void DFDataSentence::EndLine() {
    Add("\r\n");
}

void DFDataSentence::Add(std::string_view text) {
    std::copy(text.begin(), text.end(), m_buffer.begin() + static_cast<std::ptrdiff_t>(m_length));
    m_length += text.size();
}

void DFDataSentence::AddNumber(double value, std::size_t width, int precision) {
    char* const begin = m_buffer.data() + m_length;
    const char* const end = FixedPoint::Print(begin, value, precision);
    auto length = static_cast<std::size_t>(end - begin);
    if (length < width) {
        std::copy_backward(begin, begin + length, begin + width);
        std::fill_n(begin, width - length, ' ');
        length = width;
    }
    m_length += length;
}

void DFDataSentence::AddTime(Time time) {
    // A time that a calendar cannot show leaves the field empty, as with Tolm::DateTime.
    if (!time || *time > static_cast<quint64>(std::numeric_limits<qint64>::max())) {
        return;
    }
    const auto second = static_cast<unsigned>(*time / 1000 % 86400);
    for (const unsigned part : {second / 3600, second / 60 % 60, second % 60}) {
        m_buffer[m_length++] = static_cast<char>('0' + part / 10);
        m_buffer[m_length++] = static_cast<char>('0' + part % 10);
    }
}
