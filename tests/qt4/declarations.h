// What the module may use of Qt 4.8's QtCore, declared as Qt 4.8 declares it, without definitions. Debian 12
// has no Qt 4; compiling the module's sources against these declarations shows that they use nothing newer.
// Before a declaration is added here, look it up in the documentation of Qt 4.8.
// SPDX-License-Identifier: MIT
#pragma once

#define QT_VERSION 0x040807

typedef unsigned char uchar;
typedef unsigned short ushort;
typedef unsigned int uint;
typedef signed char qint8;
typedef unsigned char quint8;
typedef short qint16;
typedef unsigned short quint16;
typedef int qint32;
typedef unsigned int quint32;
typedef long long qint64;
typedef unsigned long long quint64;

#define Q_UNUSED(x) (void)x;
#define Q_DISABLE_COPY(Class)                                                                                \
    Class(const Class&);                                                                                     \
    Class& operator=(const Class&);
enum
{
    Q_COMPLEX_TYPE = 0,
    Q_PRIMITIVE_TYPE = 1,
    Q_STATIC_TYPE = 0,
    Q_MOVABLE_TYPE = 2
};
template <typename T> class QTypeInfo;
#define Q_DECLARE_TYPEINFO(TYPE, FLAGS)                                                                      \
    template <> class QTypeInfo<TYPE>                                                                        \
    {                                                                                                        \
    }
void qBadAlloc();
uint qstrnlen(const char* text, uint maximum);
uint qstrlen(const char* text);
int qstrcmp(const char* a, const char* b);
int qstrncmp(const char* a, const char* b, uint length);
char* qstrncpy(char* to, const char* from, uint length);

template <typename T> const T& qMin(const T& a, const T& b);
template <typename T> const T& qMax(const T& a, const T& b);
template <typename T> void qSwap(T& a, T& b);
template <typename RandomAccessIterator> void qSort(RandomAccessIterator begin, RandomAccessIterator end);
template <typename RandomAccessIterator, typename LessThan>
void qSort(RandomAccessIterator begin, RandomAccessIterator end, LessThan lessThan);

class QByteArray
{
public:
    QByteArray();
    QByteArray(const char*);
    QByteArray(const QByteArray&);
    ~QByteArray();
    QByteArray& operator=(const QByteArray&);
    int size() const;
    bool isEmpty() const;
    char* data();
    const char* data() const;
    const char* constData() const;

private:
    void* d;
};

class QLatin1String
{
public:
    explicit QLatin1String(const char* text);
    const char* latin1() const;

private:
    const char* characters;
};

class QString
{
public:
    QString();
    QString(const QLatin1String&);
    QString(const QString&);
    ~QString();
    QString& operator=(const QString&);
    QString& operator=(const QLatin1String&);
    int size() const;
    int length() const;
    bool isNull() const;
    bool isEmpty() const;
    void clear();
    void reserve(int size);
    QString& append(const QString&);
    QString& append(const QLatin1String&);
    QString& operator+=(const QString&);
    QString& operator+=(const QLatin1String&);
    const ushort* utf16() const;
    QString arg(const QString& a) const;
    QString arg(const QString& a1, const QString& a2) const;
    QByteArray toAscii() const;
    QByteArray toLatin1() const;
    QByteArray toUtf8() const;
    QByteArray toLocal8Bit() const;
    static QString fromAscii(const char*, int size = -1);
    static QString fromLatin1(const char*, int size = -1);
    static QString fromUtf8(const char*, int size = -1);
    bool operator==(const QString&) const;
    bool operator!=(const QString&) const;
    bool operator==(const QLatin1String&) const;
    bool operator!=(const QLatin1String&) const;

private:
    void* d;
};

template <typename A, typename B> class QStringBuilder
{
public:
    QStringBuilder(const A& a, const B& b);
    operator QString() const;
};
template <typename A, typename B> QStringBuilder<A, B> operator%(const A& a, const B& b);

template <typename T> class QList
{
public:
    QList();
    QList(const QList&);
    ~QList();
    QList& operator=(const QList&);
    void swap(QList& other);
    int size() const;
    int count() const;
    bool isEmpty() const;
    void clear();
    void reserve(int size);
    const T& at(int i) const;
    const T& operator[](int i) const;
    T& operator[](int i);
    void append(const T&);
    void removeLast();
    void insert(int i, const T&);
    void prepend(const T&);
    void removeAt(int i);
    void removeFirst();
    T takeFirst();
    T takeLast();
    T& first();
    const T& first() const;
    T& last();
    const T& last() const;

private:
    void* d;
};

class QStringList : public QList<QString>
{
};

template <typename T> class QVector
{
public:
    QVector();
    QVector(const QVector&);
    ~QVector();
    QVector& operator=(const QVector&);
    void swap(QVector& other);
    int size() const;
    int count() const;
    bool isEmpty() const;
    void clear();
    void reserve(int size);
    void resize(int size);
    int capacity() const;
    void squeeze();
    void fill(const T&, int size = -1);
    T& first();
    const T& first() const;
    T& last();
    const T& last() const;
    void insert(int i, const T&);
    void prepend(const T&);
    void remove(int i);
    void remove(int i, int count);
    T* data();
    const T* data() const;
    const T* constData() const;
    T* begin();
    T* end();
    const T* begin() const;
    const T* end() const;
    const T* constBegin() const;
    const T* constEnd() const;
    const T& at(int i) const;
    const T& operator[](int i) const;
    T& operator[](int i);
    void append(const T&);

private:
    void* d;
};

class QIODevice
{
public:
    enum OpenModeFlag
    {
        NotOpen = 0,
        ReadOnly = 1,
        WriteOnly = 2,
        ReadWrite = 3
    };
};

class QFile : public QIODevice
{
public:
    explicit QFile(const QString& name);
    ~QFile();
    bool exists() const;
    bool open(OpenModeFlag mode);
    qint64 size() const;
    bool resize(qint64 size);
    void close();

private:
    void* d;
};

class QFileInfo
{
public:
    QFileInfo();
    QFileInfo(const QString& file);
    QFileInfo(const QFileInfo&);
    ~QFileInfo();
    QFileInfo& operator=(const QFileInfo&);
    void setFile(const QString& file);
    bool exists() const;
    bool isFile() const;
    qint64 size() const;

private:
    void* d;
};

class QDir
{
public:
    QDir(const QString& path);
    ~QDir();
    bool exists() const;
    bool mkpath(const QString& path) const;

private:
    void* d;
};

class QDataStream
{
public:
    QDataStream& operator>>(qint32& value);
    QDataStream& operator<<(qint32 value);
};
QDataStream& operator<<(QDataStream&, const QString&);
QDataStream& operator>>(QDataStream&, QString&);
