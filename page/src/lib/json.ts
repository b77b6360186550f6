/** A JSON value. */
export type Json = null | boolean | number | string | Json[] | JsonObject;
export interface JsonObject {
    [name: string]: Json;
}

export function isObject(value: unknown): value is JsonObject {
    return typeof value === "object" && value !== null && !Array.isArray(value);
}

export function equal(a: Json | undefined, b: Json | undefined): boolean {
    if (a === b) return true;
    if (Array.isArray(a) && Array.isArray(b))
        return a.length === b.length && a.every((element, index) => equal(element, b[index]));
    if (!isObject(a) || !isObject(b)) return false;
    const names = Object.keys(a);
    return names.length === Object.keys(b).length && names.every((name) => name in b && equal(a[name], b[name]));
}

/** The value at a dotted path; nothing where there is none. */
export function at(value: Json | undefined, path: string): Json | undefined {
    let found = value;
    for (const name of split(path)) found = isObject(found) && Object.hasOwn(found, name) ? found[name] : undefined;
    return found;
}

/** A copy of the object with the value at a dotted path; objects on the way are made. */
export function withValue(object: JsonObject, path: string, value: Json): JsonObject {
    const [name, ...rest] = split(path);
    if (name === undefined) return object;
    if (rest.length === 0) return { ...object, [name]: value };
    const child = Object.hasOwn(object, name) ? object[name] : undefined;
    return { ...object, [name]: withValue(isObject(child) ? child : {}, rest.join("."), value) };
}

/** Every value that is no object, with its dotted path; a list counts as one value. */
export function leaves(value: Json | undefined, path = ""): [path: string, value: Json][] {
    if (value === undefined) return [];
    if (!isObject(value)) return [[path, value]];
    return Object.entries(value).flatMap(([name, child]) => leaves(child, join(path, name)));
}

export function join(...parts: string[]): string {
    return parts.filter((part) => part !== "").join(".");
}

function split(path: string): string[] {
    return path === "" ? [] : path.split(".");
}
