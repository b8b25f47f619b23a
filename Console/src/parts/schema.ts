/// The schema of a document, as `?schema=true` shows it.
export interface Schema {
    type?: string;
    title?: string;
    units?: string;
    sortOrder?: number;
    minimum?: number;
    maximum?: number;
    maxLength?: number;
    enum?: (number | string)[];
    enumText?: string[];
    readOnly?: boolean;
    writeOnly?: boolean;
    used?: boolean;
    kind?: "counter" | "gauge";
    label?: string;
    properties?: Record<string, Schema>;
}

/// The members of an object's schema, in the order in which people read them.
export function membersOf(schema: Schema): [string, Schema][] {
    const members = Object.entries(schema.properties ?? {});
    return members.sort(([, one], [, other]) => (one.sortOrder ?? 0) - (other.sortOrder ?? 0));
}

/// The name of a value for people.
export function titleOf(key: string, schema: Schema): string {
    return schema.title !== undefined && schema.title !== "" ? schema.title : key;
}
