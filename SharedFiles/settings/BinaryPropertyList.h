#pragma once

#include <QByteArray>

/// Whether the bytes begin as the binary form of a property list does.
bool isBinaryPropertyList(const QByteArray& bytes);

/// Whether what such bytes tell of the shape of their value is sound: every reference leads to an object within them,
/// nothing is nested deeper than `deepest` levels, no array or dictionary holds itself, and the value has at most a
/// million parts and 64 MiB of text and data, each counted as often as it is referred to. Keys are texts without a null
/// character, integers have no more than 64 bits. What else numbers and dates hold is not looked at.
///
/// The form: the header "bplist00", the objects, a table of their offsets, and a trailer of 32 bytes. An object is a
/// byte of kind and count; arrays (0xA) and dictionaries (0xD) follow it up with the numbers of the objects in them, a
/// dictionary's keys before its values. All numbers are big-endian.
bool isShallowBinaryPropertyList(const QByteArray& bytes, int deepest);
