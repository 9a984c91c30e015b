// Tests the reading of project files, and the configuration tree that models see.
// SPDX-License-Identifier: MIT
#include "project_tree/project_reader.h"

#include <QtCore/QBuffer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

ProjectReading read(const QByteArray& xml)
{
    QBuffer buffer;
    buffer.setData(xml);
    buffer.open(QIODevice::ReadOnly);
    return readProject(buffer, QStringLiteral("p.xml"));
}

std::string errorOf(const QByteArray& xml)
{
    const ProjectReading reading = read(xml);
    EXPECT_EQ(reading.project == nullptr, !reading.error.isEmpty());
    return reading.error.toStdString();
}

TEST(ProjectReader, ReadsNestedObjectsInTheirOrderWithTypedProperties)
{
    const ProjectReading reading =
        read("<object name='root'>\n"
             " <property name='n' type='int32'> -5 </property>\n"
             " <object name='b'><object name='deep'/></object>\n"
             " <!-- a comment -->\n"
             " <property name='u' type='uint32'>4294967295</property>\n"
             " <object name='a'><property name='t' type='string'> x </property></object>\n"
             "</object>");
    ASSERT_TRUE(reading.project) << reading.error.toStdString();
    object* const root = reading.project.get();
    EXPECT_EQ(root->name, QStringLiteral("root"));
    EXPECT_EQ(object_get_property_value_type_int32(root, "n", 1), -5);
    EXPECT_EQ(property_get_value_type_uint32(object_get_property(root, "u"), 1), 4294967295U);
    object* const b = object_first_child(root);
    EXPECT_EQ(b, object_get_child(root, "b"));
    EXPECT_NE(object_get_child(b, "deep"), nullptr);
    object* const a = object_next(b);
    EXPECT_EQ(a, object_get_child(root, "a"));
    EXPECT_EQ(object_next(a), nullptr);
    EXPECT_EQ(object_get_property_value_type_string(a, "t", QString()), QStringLiteral(" x "))
        << "blanks are kept";
}

TEST(ProjectReader, AbsentObjectsAndPropertiesGiveNullOrTheDefault)
{
    object node;
    EXPECT_EQ(object_get_child(nullptr, "x"), nullptr);
    EXPECT_EQ(object_get_child(&node, "x"), nullptr);
    EXPECT_EQ(object_first_child(nullptr), nullptr);
    EXPECT_EQ(object_first_child(&node), nullptr);
    EXPECT_EQ(object_next(nullptr), nullptr);
    EXPECT_EQ(object_get_property(nullptr, "x"), nullptr);
    EXPECT_EQ(property_get_value_type_uint32(nullptr, 9), 9U);
    EXPECT_EQ(object_get_property_value_type_int32(nullptr, "x", 8), 8);
    EXPECT_EQ(object_get_property_value_type_int32(&node, "x", 8), 8);
    EXPECT_TRUE(object_get_property_value_type_string(nullptr, "x", QString()).isNull());
    EXPECT_EQ(object_get_property_value_type_string(&node, "x", QStringLiteral("d")), QStringLiteral("d"));
}

TEST(ProjectReader, APropertyOfTheOtherKindCountsAsAbsent)
{
    object node;
    node.setText(QStringLiteral("text"), QStringLiteral("5")).setNumber(QStringLiteral("number"), 5);
    EXPECT_EQ(object_get_property_value_type_int32(&node, "text", 8), 8);
    EXPECT_EQ(property_get_value_type_uint32(object_get_property(&node, "text"), 8), 8U);
    EXPECT_EQ(object_get_property_value_type_string(&node, "number", QStringLiteral("d")),
              QStringLiteral("d"));
}

TEST(ProjectReader, ErrorsNameFileLineAndColumnAndWhatWasExpected)
{
    EXPECT_THAT(errorOf("<object name='root'>\n <object>\n</object></object>"),
                testing::StartsWith("p.xml:2:9: <object> has no attribute \"name\""));
    EXPECT_THAT(errorOf("<object name='r'>\n<property name='n' type='int32'>5x</property></object>"),
                testing::AllOf(testing::StartsWith("p.xml:2:"),
                               testing::HasSubstr("value \"5x\": expected a number from")));
    EXPECT_THAT(errorOf("<object name='r'><property name='n' type='int32'>2147483648</property></object>"),
                testing::HasSubstr("-2147483648 to 2147483647"));
    EXPECT_THAT(errorOf("<object name='r'><property name='n' type='uint32'>-1</property></object>"),
                testing::HasSubstr("0 to 4294967295"));
    EXPECT_THAT(errorOf("<object name='r'><property name='n' type='float'>1</property></object>"),
                testing::HasSubstr("type \"float\": expected int32, uint32 or string"));
    EXPECT_THAT(errorOf("<object name='r'><property name='n'>1</property></object>"),
                testing::HasSubstr("has no attribute \"type\""));
    EXPECT_THAT(
        errorOf(
            "<object name='r'><property name='n' type='string'/><property name='n' type='string'/></object>"),
        testing::HasSubstr("two properties \"n\""));
    EXPECT_THAT(errorOf("<object name='r'><thing/></object>"),
                testing::HasSubstr("<thing>: expected <object> or <property>"));
    EXPECT_THAT(errorOf("<project/>"), testing::HasSubstr("<project>: expected the project's <object>"));
    EXPECT_THAT(errorOf("<object name='r'>"), testing::StartsWith("p.xml:1:"));
    EXPECT_THAT(errorOf("<object name='r'/>\n<object name='s'/>"), testing::StartsWith("p.xml:2:"));
    EXPECT_THAT(errorOf(""), testing::StartsWith("p.xml:1:"));
}

TEST(ProjectReader, TooDeepNestingIsAnErrorAndNotACrash)
{
    QByteArray xml;
    for (int i = 0; i < 100000; ++i)
        xml += "<object name='o'>";
    EXPECT_THAT(errorOf(xml), testing::HasSubstr("nested more than 100 levels deep"));
}

TEST(ProjectReader, AMissingFileIsNamed)
{
    EXPECT_THAT(readProjectFile(QStringLiteral("/nowhere/p.xml")).error.toStdString(),
                testing::StartsWith("/nowhere/p.xml: cannot be read: "));
}

} // namespace
