#pragma once

#include <QByteArray>
#include <QVariantList>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace tovel {

// An instance of a class that the run-time system knows by name.
class Object
{
public:
    virtual ~Object() = default;
};

// A class found by name.
class ObjectClass
{
public:
    virtual ~ObjectClass() = default;

    virtual bool instancesRespondToSelector(const QByteArray &selector) const = 0;

    // The initialiser "initWithWindows:spaceID:"; to be called only when instances respond to it.
    // Null when no instance could be made. The caller owns the result.
    virtual std::unique_ptr<Object> initWithWindowsSpaceID(const QVariantList &windows,
                                                           std::uint64_t space) const = 0;
};

// The dynamic loader, as far as run-time binding needs it. Every look-up answers null for what is
// not there, which every caller copes with.
class DynamicLoader
{
public:
    // dlopen's mode.
    static constexpr int RtldLazy = 1;
    // The pseudo-handle that searches the whole process.
    static void *rtldDefault() { return reinterpret_cast<void *>(-2); }

    virtual ~DynamicLoader() = default;

    virtual void *dlopen(const char *path, int mode) = 0;

    // The address of an exported symbol; null also for a null handle.
    virtual void *dlsym(void *handle, const char *name) = 0;

    virtual std::uint32_t _dyld_image_count() const = 0;

    // Path of a loaded image; null for an index out of range.
    virtual const char *_dyld_get_image_name(std::uint32_t index) const = 0;

    // The address of the image's Mach-O header; null for an index out of range.
    virtual const std::byte *_dyld_get_image_header(std::uint32_t index) const = 0;

    virtual std::intptr_t _dyld_get_image_vmaddr_slide(std::uint32_t index) const = 0;

    // The readable memory that the image is mapped to, header included. The loader owns it for
    // the life of the process. Readers must not leave it.
    virtual std::span<const std::byte> imageMemory(std::uint32_t index) const = 0;

    // Null when there is no such class. The loader owns the result.
    virtual const ObjectClass *NSClassFromString(const QByteArray &name) const = 0;
};

} // namespace tovel
