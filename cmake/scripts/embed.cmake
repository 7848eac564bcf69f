# cmake -DINPUT=table -DOUTPUT=file -P embed.cmake: the table as one string literal a line.
file(READ ${INPUT} text)
string(REPLACE "\\" "\\\\" text "${text}")
string(REPLACE "\"" "\\\"" text "${text}")
string(REPLACE "\t" "\\t" text "${text}")
string(REPLACE "\n" "\\n\"\n\"" text "${text}")
file(WRITE ${OUTPUT} "\"${text}\"\n")
