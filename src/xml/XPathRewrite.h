#pragma once

#include <QString>

/// Turns the query forms the documents are searched with into XPath 1.0 that libxml2
/// evaluates, in one linear pass:
/// - a parenthesised union of names used as a step, "a/(b | c)/d", becomes
///   "a/*[self::b or self::c]/d" (the same nodes, in document order);
/// - text() after an attribute step, "./@tcFormat[1]/text()", is dropped, so the
///   query yields the attribute, whose value is the text asked for.
/// Everything else, string literals included, is copied unchanged.
QString rewriteXPathForLibxml(const QString &query);
