// XML in one call: opening texts and files, indenting, pulling out a single value.
//
// What is read, and within which bounds, is told in platform/xml.h. Every function raises
// `EXMLError` ("FILE:LINE:COLUMN: what is wrong") when it is given something else. Any thread.
#pragma once

#include <string>

#include "platform/xml.h"

namespace System::Beacon::Fencing {

/// The same document with one element a line, each two blanks deeper than the one around it; lines
/// end with "\n". Elements that hold text are left as they are.
std::string FormatXML(const std::string& AXML);

/// Opens a file and returns the document node, whose children are the top-level nodes: the root
/// element and a declaration or instructions beside it. `ADocument` gets the document, and keeps
/// what it held when the file is refused. Raises `EFileError` when it cannot be read.
TRef<IXMLNode> OpenXMLFromFile(const std::string& AFileName, TRef<IXMLDocument>& ADocument);

/// The same with a text.
TRef<IXMLNode> OpenXMLFromString(const std::string& AXML, TRef<IXMLDocument>& ADocument);

/// The text of the first child of the first top-level node that has the name (letter case ignored);
/// empty when no such node or no child is there. Deeper elements are not looked at.
std::string GetValueFromXMLRootChildNode(const std::string& AXML, const std::string& ANodeName);

}  // namespace System::Beacon::Fencing
