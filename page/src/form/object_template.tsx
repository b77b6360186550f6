import type { ObjectFieldTemplateProps } from "@rjsf/utils";
import { title } from "@/lib/text";
import { idPrefix } from "./form_context";

/**
 * The members of an object as a group of its own. The whole form, and an object of nothing but groups, is no group: its
 * groups stand by themselves, behind one of the members that are none.
 */
export function ObjectTemplate({ idSchema, title: name, properties, schema }: ObjectFieldTemplateProps) {
    const groups = properties.filter((property) => isGroup(schema.properties?.[property.name]));
    const single = properties.filter((property) => !groups.includes(property));
    const isFrame = idSchema.$id === idPrefix || single.length === 0;
    if (!isFrame) return <Group name={title(name)} fields={properties} />;
    return (
        <>
            {single.length > 0 && <Group name="General" fields={single} />}
            {groups.map((property) => property.content)}
        </>
    );
}

function Group({ name, fields }: { name: string; fields: ObjectFieldTemplateProps["properties"] }) {
    return (
        <fieldset className="card group">
            <legend>{name}</legend>
            <div className="fields">{fields.map((field) => field.content)}</div>
        </fieldset>
    );
}

function isGroup(schema: unknown): boolean {
    return (schema as { type?: string } | undefined)?.type === "object";
}
