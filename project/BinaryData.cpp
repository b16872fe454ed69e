// Binary data: blobs that other records refer to by BinaryDataId. A blob holds
// either a disk file packed as a one-entry zip archive or raw bytes; the table
// does not mark which.
#include <cstring>
#include <string>

#include "core/Operation.h"
#include "core/RecordAccess.h"
#include "project/BlobFiles.h"

using namespace qvb;
using namespace qvb::catalogue;

namespace {

constexpr const char* kId = "BinaryDataId";
constexpr const char* kFlags = "Flags";
constexpr const char* kBlob = "BinaryData";

}  // namespace

int CDbObject::AddBinaryData(DWORD* pId) {
    return Run([&] {
        return Result(addWithNewId(Table(TAB_BINARYDATA), kId, pId,
                                   [](RecordWriter& r) { r.Long(kFlags, 0).ClearBinary(kBlob); }));
    });
}

int CDbObject::GetBinaryData(DWORD Id, DWORD* pFlags) {
    return Run([&] {
        CIsamTable& blobs = Table(TAB_BINARYDATA);
        if (!Succeeded(readFixedPartById(blobs, Id))) return 0;
        return Result(RecordReader(blobs).Long(kFlags, pFlags).error());
    });
}

int CDbObject::GetBinaryDataLength(DWORD Id, DWORD* pLength) {
    return Run([&] {
        CIsamTable& blobs = Table(TAB_BINARYDATA);
        if (!Succeeded(readById(blobs, Id))) return 0;
        return Result(storedLength(blobs, kBlob, pLength));
    });
}

int CDbObject::GetBinaryData(DWORD Id, BYTE** ppData, DWORD* pLength) {
    return Run([&] {
        CIsamTable& blobs = Table(TAB_BINARYDATA);
        std::string blob;
        if (!Succeeded(readById(blobs, Id)) || !Succeeded(blobs.GetBinary(kBlob, &blob))) return 0;
        // One byte more than the blob, as callers have always been given.
        if (ppData) {
            *ppData = new BYTE[blob.size() + 1];
            if (!blob.empty()) std::memcpy(*ppData, blob.data(), blob.size());
        }
        if (pLength) *pLength = static_cast<DWORD>(blob.size());
        return 1;
    });
}

int CDbObject::WriteBinaryData(DWORD Id, BYTE* pData, DWORD Length) {
    return Run([&] {
        if (!pData && Length) return Result(isam::ISAM_BAD_PARAMETER);
        CIsamTable& blobs = Table(TAB_BINARYDATA);
        if (!Succeeded(readFixedPartById(blobs, Id))) return 0;
        if (!Succeeded(blobs.SetBinary(kBlob, pData, Length))) return 0;
        return Result(blobs.Rewrite());
    });
}

int CDbObject::UpdateBinaryData(DWORD Id, DWORD Flags) {
    return Run([&] {
        return Result(
            updateById(Table(TAB_BINARYDATA), Id, [&](RecordWriter& r) { r.Long(kFlags, Flags); }));
    });
}

int CDbObject::ReadBinaryDataFile(DWORD Id, const char* pPath) {
    return Run([&] {
        CIsamTable& blobs = Table(TAB_BINARYDATA);
        if (!Succeeded(readFixedPartById(blobs, Id))) return 0;
        return Result(packFileIntoRecord(blobs, kBlob, pPath, EmptyInput::StoredEmpty));
    });
}

int CDbObject::WriteBinaryDataFile(DWORD Id, const char* pPath) {
    return Run([&] {
        CIsamTable& blobs = Table(TAB_BINARYDATA);
        if (!Succeeded(readById(blobs, Id))) return 0;
        return Result(unpackRecordToFile(blobs, kBlob, pPath));
    });
}

int CDbObject::DeleteBinaryData(DWORD Id) {
    return Run([&] {
        CIsamTable& blobs = Table(TAB_BINARYDATA);
        // The blob goes first: a delete that then fails leaves an empty record.
        int rc = readFixedPartById(blobs, Id);
        if (rc == isam::ISAM_OK)
            rc = packFileIntoRecord(blobs, kBlob, nullptr, EmptyInput::StoredEmpty);
        if (rc == isam::ISAM_OK) rc = deleteById(blobs, Id);
        return Result(rc);
    });
}

int CDbObject::EnumBinaryData(CDWordArray& ids) {
    return Run([&] { return Result(appendAll(Table(TAB_BINARYDATA), 1, kId, ids)); });
}

int CDbObject::GetBinaryDataCount(DWORD* pCount) {
    return Run([&] {
        return Result(countByEnumerating(pCount, [&](CDWordArray& ids) {
            return appendAll(Table(TAB_BINARYDATA), 1, kId, ids);
        }));
    });
}
