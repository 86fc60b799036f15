#pragma once
/// Lists of names as they cross the plug-in's boundary.

/// One string. Made by the plug-in; owned by the list that holds it. Null texts and data count as empty. When
/// memory is short for a change, the text stays as it was and the calling thread's record gets 10021007.
class IString {
public:
    virtual const char* GetStr() = 0;
    virtual void SetStr(const char* text) = 0;
    /// Length in bytes, without the closing 0.
    virtual unsigned GetStrLength() = 0;
    /// Equals GetStrLength().
    virtual unsigned GetDataSize() = 0;
    /// Equals GetStr().
    virtual const void* GetData() = 0;
    virtual void SetData(const void* data, unsigned int bytes) = 0;
    virtual void Concat(const char* text) = 0;
    virtual void Append(const void* data, unsigned int bytes) = 0;
    virtual void Clear() = 0;
    virtual bool isEmpty() = 0;
    /// Deletes the object. Not for strings that a list holds.
    virtual void Free() = 0;

protected:
    ~IString() = default;
};

/// An owned list of strings. Whoever receives one releases it with Free(), which frees its elements too.
///
/// Failures return -1, false or null and leave an error in the calling thread's record. GetCount, Add,
/// Insert, Remove, Find, FindString and Clear clear the record first, and so AddString and InsertString do
/// once they have their string; Free and GetString leave it alone.
class IStrings {
public:
    virtual void Free() = 0;
    virtual int GetCount() = 0;
    /// Appends and takes ownership; returns the index.
    virtual int Add(IString* string) = 0;
    /// Appends a copy of the text; returns the index.
    virtual int AddString(const char* text) = 0;
    /// Inserts before index (0 to count) and takes ownership; returns the index.
    virtual int Insert(int index, IString* string) = 0;
    virtual int InsertString(int index, const char* text) = 0;
    /// Removes and frees one element.
    virtual bool Remove(int index) = 0;
    /// Index of the first element with the same text.
    virtual int Find(IString* string) = 0;
    virtual int FindString(const char* text) = 0;
    /// The element, still the list's. The index must lie in 0 to count - 1; anything else ends the process.
    virtual IString* GetString(int index) = 0;
    virtual void Clear() = 0;

protected:
    ~IStrings() = default;
};
