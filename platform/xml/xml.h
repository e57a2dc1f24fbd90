#pragma once

#include <cstddef>

#include "platform/base/allocator.h"
#include "platform/base/object.h"
#include "platform/base/status.h"

/// The XML document model (XML 1.0, fifth edition, non-validating). What is refused, how bytes are kept and
/// how new elements are laid out is told in docs/xml.md.
///
/// Editing is lossless: what an edit does not touch is written back byte for byte. Names and values go in and
/// out as zero-terminated UTF-8, whatever the document's own encoding. A capacity counts bytes, the
/// terminator included; a value that does not fit answers zStatus_DoesNotFit. No operation throws.

namespace xml {
struct Item;
}

/// An element of a document, null for none. Valid while its document lives; the handle of a deleted item
/// stays safe to use and is answered with a failure, null or 0.
using zXmlItem = xml::Item*;

// ---- Constructing, loading, saving ----------------------------------------------------------------------

/// Creates an empty document (no root). Like every document it is given back with zObject_Destroy.
zStatus zXml_Construct(zHandle* document, const zAllocator* allocator);

/// Parses the file `path`. zStatus_NotFound when it does not exist, zStatus_IoError when it cannot be read,
/// zStatus_Malformed or zStatus_Unsupported when it is no XML document that can be read; the detail then is
/// "path:line:column: sentence". `*document` is null after a failure.
zStatus zXml_Load(zHandle* document, const char* path, const zAllocator* allocator);

/// Parses `size` bytes, which are copied. Detail: "line:column: sentence".
zStatus zXml_LoadBytes(zHandle* document, const void* bytes, std::size_t size, const zAllocator* allocator);

/// Parses text up to its terminating zero, as zXml_LoadBytes.
zStatus zXml_FromText(zHandle* document, const char* text, const zAllocator* allocator);

/// Writes the whole document to the file `path`, replacing it, complete or not at all. A document without a
/// root answers zStatus_BadArgument.
zStatus zXml_Save(zHandle document, const char* path);

/// Serialises the whole document into a new block of `allocator` (null: the application allocator), which
/// then belongs to the caller; no zero byte stands behind its `*size` bytes. A document without a root
/// answers zStatus_BadArgument. `*bytes` is null after a failure.
zStatus zXml_SaveBytes(zHandle document, void** bytes, std::size_t* size, const zAllocator* allocator);

// ---- Navigating -----------------------------------------------------------------------------------------

/// The root element, null for an empty document.
zXmlItem zXml_Root(zHandle document);

/// As zXml_Root; a document without a root answers zStatus_NotFound.
zStatus zXml_FindRoot(zHandle document, zXmlItem* root);

/// The first child of `parent` whose name equals `path`, in document order; a path of names between slashes
/// goes down that way, taking the first match on each level. With a null parent the first name is that of the
/// root itself. Names compare exactly. zStatus_NotFound when there is none; `*item` is then null.
zStatus zXml_FindChild(zHandle document, zXmlItem parent, const char* path, zXmlItem* item);

/// The first child element of `item`, null when there is none.
zXmlItem zXml_FirstChild(zHandle document, zXmlItem item);

/// The next element under the same parent, null after the last.
zXmlItem zXml_NextSibling(zHandle document, zXmlItem item);

/// Number of child elements.
std::size_t zXml_ChildCount(zHandle document, zXmlItem item);

/// The child element at the 0-based `index`, null behind the last. Walking up or down by index costs the same
/// as walking by sibling.
zXmlItem zXml_ChildAt(zHandle document, zXmlItem item, std::size_t index);

/// The element's name, owned by the document and valid as long as that lives, even when the element is
/// deleted; null for no item.
const char* zXml_ItemName(zHandle document, zXmlItem item);

// ---- Reading text ---------------------------------------------------------------------------------------

/// Copies the item's character data and CDATA: references resolved, line ends normalised, children's text
/// left out. White space alone reads as empty. The buffer is empty after a failure.
zStatus zXml_ItemText(zHandle document, zXmlItem item, char* buffer, std::size_t capacity);

/// As zXml_ItemText for the first child named `name`; zStatus_NotFound when there is none.
zStatus zXml_ChildText(zHandle document, zXmlItem parent, const char* name, char* buffer,
                       std::size_t capacity);

/// Copies the value of the attribute `name`, normalised as CDATA. zStatus_NotFound when there is none. A
/// failure leaves the buffer as it was: file removal relies on the value of the entry before staying in it.
zStatus zXml_AttrText(zHandle document, zXmlItem item, const char* name, char* buffer, std::size_t capacity);

// ---- Changing -------------------------------------------------------------------------------------------

/// Appends an empty element as the last child of `parent`; with a null parent it becomes the root of an empty
/// document. `item` may be null. A name that XML does not allow or that the document's encoding cannot hold
/// is refused with zStatus_BadArgument, and so is a second root.
zStatus zXml_AddItem(zHandle document, zXmlItem parent, const char* name, zXmlItem* item);

/// Replaces the element's text. Text that XML cannot hold or that is no UTF-8 is refused with
/// zStatus_BadArgument and changes nothing; so it is for zXml_SetAttrText.
zStatus zXml_SetItemText(zHandle document, zXmlItem item, const char* text);

/// Sets an attribute: a new one goes behind the others, one that is there keeps its place.
zStatus zXml_SetAttrText(zHandle document, zXmlItem item, const char* name, const char* text);

/// Appends a deep copy of `sourceItem` (of another document or the same one) under `parent`: as the last
/// child when `before` is null, else before that child; with a null parent as the root of an empty document.
/// `copy` may be null. zStatus_BadArgument for a second root, and for a copy with a name or a comment that
/// the document's encoding cannot hold.
zStatus zXml_CopyItem(zHandle document, zXmlItem parent, zXmlItem before, zHandle sourceDocument,
                      zXmlItem sourceItem, zXmlItem* copy);

/// Removes the item and its whole subtree; their handles are dead from then on. Deleting a dead item answers
/// zStatus_BadArgument.
zStatus zXml_DeleteItem(zHandle document, zXmlItem item);
