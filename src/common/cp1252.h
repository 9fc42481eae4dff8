#pragma once
// Windows-1252, the single-byte code page of the program's own files (call-sign file, language
// files, nickname list, Pictaro's app.cfg). Files made on Windows read back unchanged here.
#include <QByteArray>
#include <QString>
#include <QStringView>
#include <cstdint>

namespace cp1252 {

// The character a byte stands for. The five bytes Windows leaves undefined map to the C1 control
// of the same number, as Windows itself does, so every byte round-trips.
char16_t toUnicode(unsigned char byte);

// The byte for a character, or '?' when the code page has none for it.
unsigned char fromUnicode(char16_t ch);

QString decode(const char* data, qsizetype size);
inline QString decode(const QByteArray& bytes) { return decode(bytes.constData(), bytes.size()); }
QByteArray encode(QStringView text);

// Position (0..255) of a byte's character in Unicode order: comparing ranks compares the
// characters exactly as a binary comparison of the decoded text does.
uint8_t unicodeRank(unsigned char byte);

}  // namespace cp1252

// Text of a file the program reads: UTF-8 when the bytes are valid UTF-8, else Windows-1252.
QString decodeUtf8OrCp1252(const QByteArray& bytes);
