import { Validator, type OutputUnit, type Schema } from "@cfworker/json-schema";
import {
    toErrorList,
    toErrorSchema,
    type ErrorSchema,
    type RJSFSchema,
    type RJSFValidationError,
    type ValidatorType,
} from "@rjsf/utils";

/** An error that only says that something below is wrong. */
const enclosing = new Set(["properties", "items", "additionalProperties", "$ref", "allOf"]);

/** Forms hold undefined for a field that was emptied, which is no JSON value: the member goes. */
function toJson(data: unknown): unknown {
    return data === undefined ? null : JSON.parse(JSON.stringify(data));
}

/** Checks by walking the schema: validators that compile one to code need a page that may evaluate texts. */
function check(schema: RJSFSchema, data: unknown): OutputUnit[] {
    const result = new Validator(schema as Schema, "2020-12", false).validate(toJson(data));
    return result.errors.filter((error) => !enclosing.has(error.keyword));
}

/** The steps of a JSON pointer in a fragment ("#/Motion/minimum_area"). */
function steps(pointer: string): string[] {
    return pointer
        .split("/")
        .slice(1)
        .map((step) => decodeURIComponent(step).replaceAll("~1", "/").replaceAll("~0", "~"));
}

/** The schema of the value at a path; an empty one where none is told. */
function schemaAt(schema: RJSFSchema, path: string[]): RJSFSchema {
    let found = schema;
    for (const step of path) found = (/^\d+$/.test(step) ? found.items : found.properties?.[step]) as RJSFSchema ?? {};
    return found;
}

/** What is wrong, in a person's words rather than the library's. */
function explain(error: OutputUnit, schema: RJSFSchema): string {
    const node = schemaAt(schema, steps(error.instanceLocation));
    switch (error.keyword) {
        case "minimum":
        case "maximum":
            if (node.minimum !== undefined && node.maximum !== undefined)
                return `Must be ${node.minimum} to ${node.maximum}`;
            return node.minimum !== undefined ? `Must be at least ${node.minimum}` : `Must be at most ${node.maximum}`;
        case "type":
            return node.type === "integer" ? "Must be a whole number" : `Must be a ${node.type}`;
        case "enum":
            return `Must be one of ${(node.enum ?? []).join(", ")}`;
        case "pattern":
            return `Must match ${node.pattern}`;
        default:
            return error.error;
    }
}

function toValidationError(error: OutputUnit, schema: RJSFSchema): RJSFValidationError {
    const message = explain(error, schema);
    const property = steps(error.instanceLocation)
        .map((step) => (/^\d+$/.test(step) ? `[${step}]` : `.${step}`))
        .join("");
    return { name: error.keyword, property, message, stack: `${property} ${message}` };
}

function unique(errors: RJSFValidationError[]): RJSFValidationError[] {
    return errors.filter((error, index) => errors.findIndex((other) => other.stack === error.stack) === index);
}

/** What forms check their values with before the server does. */
export const validator: ValidatorType = {
    validateFormData(formData, schema) {
        const errors = unique(check(schema, formData).map((error) => toValidationError(error, schema)));
        return { errors, errorSchema: toErrorSchema(errors) };
    },
    toErrorList(errorSchema?: ErrorSchema, fieldPath?: string[]) {
        return toErrorList(errorSchema, fieldPath);
    },
    isValid(schema, formData, rootSchema) {
        // A schema within another may point at the definitions of the whole.
        const whole = { ...schema, $defs: { ...rootSchema.$defs, ...schema.$defs } };
        return new Validator(whole as Schema, "2020-12").validate(toJson(formData)).valid;
    },
    rawValidation(schema, formData) {
        return { errors: check(schema, formData) as never[] };
    },
};
